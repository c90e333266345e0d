// Norms of vectors and matrices.

#include "matrices.h"

#include <Eigen/SVD>

#include <cmath>
#include <limits>

namespace {

using linalg::Matrix;

enum class Kind { one, two, infinity, frobenius };

Kind kindOf(const krt::Value& p) {
    if (p.missing()) {
        return Kind::two;
    }
    if (p.isText()) {
        const std::string word = p.text();
        if (word == "fro") {
            return Kind::frobenius;
        }
        if (word == "inf" || word == "Inf") {
            return Kind::infinity;
        }
        krt::error("linalg:value", p.label() + " is '" + word + "', expected 1, 2, Inf or 'fro'");
    }
    const double number = p.scalar();
    if (number == 1) {
        return Kind::one;
    }
    if (number == 2) {
        return Kind::two;
    }
    if (std::isinf(number) && number > 0) {
        return Kind::infinity;
    }
    krt::error("linalg:value", p.label() + " is " + krt::numberText(number) + ", expected 1, 2, Inf or 'fro'");
}

/// The largest singular value; of what is not finite, what the other norms give.
template <typename Scalar>
double spectralNorm(const Matrix<Scalar>& a) {
    return a.allFinite() ? Eigen::BDCSVD<Matrix<Scalar>>(a).singularValues()(0) : a.cwiseAbs().sum();
}

template <typename Scalar>
double normOf(const Matrix<Scalar>& a, Kind kind) {
    const bool isVector = a.rows() == 1 || a.cols() == 1;
    if (a.size() == 0) {
        return 0;
    }
    if (kind == Kind::frobenius || (kind == Kind::two && isVector)) {
        return a.reshaped().stableNorm();
    }
    switch (kind) {
        case Kind::one:
            return isVector ? a.cwiseAbs().sum()
                            : a.cwiseAbs().colwise().sum().template maxCoeff<Eigen::PropagateNaN>();
        case Kind::infinity:
            return isVector ? a.cwiseAbs().template maxCoeff<Eigen::PropagateNaN>()
                            : a.cwiseAbs().rowwise().sum().template maxCoeff<Eigen::PropagateNaN>();
        default:
            return spectralNorm(a);
    }
}

}  // namespace

KRT_FUNCTION(norm) {
    in.expectCount(1, 2);
    const Kind kind = kindOf(in(1, "p"));
    linalg::withMatrix(in(0, "A"), [&](const auto& a) { out.set(0, normOf(a, kind)); });
}
