// Linear systems: solve, inv, lstsq.

#include "matrices.h"

#include <Eigen/LU>
#include <Eigen/QR>

#include <limits>
#include <sstream>

namespace {

using linalg::Index;
using linalg::Matrix;

/// The factors of a square matrix. Fails for a singular one and warns for one that is nearly so.
template <typename Scalar>
Eigen::PartialPivLU<Matrix<Scalar>> factor(const Matrix<Scalar>& a, const krt::Value& value) {
    const krt::Frame frame;
    Eigen::PartialPivLU<Matrix<Scalar>> factors(a);
    if ((factors.matrixLU().diagonal().array() == Scalar(0)).any()) {
        krt::error("linalg:singular", value.label() + " is singular");
    }
    const double condition = factors.rcond();
    if (condition < std::numeric_limits<double>::epsilon()) {
        std::ostringstream message;
        message << value.label() << " is nearly singular, and results may be inaccurate: reciprocal condition "
                << condition;
        krt::warn(message.str());
    }
    return factors;
}

/// Least squares by Householder QR with column pivoting. Columns are scaled to norm 1 first: that takes badly
/// scaled units (a year beside a population) out of the condition, and changes no solution of full rank. Where
/// the rank is lower the solution is not unique, and the one of least norm is got from the unscaled columns.
template <typename Scalar>
Matrix<Scalar> leastSquares(const Matrix<Scalar>& a, const Matrix<Scalar>& b) {
    Eigen::VectorXd scale(a.cols());
    for (Index column = 0; column < a.cols(); ++column) {
        const double norm = a.col(column).stableNorm();
        scale(column) = norm > 0 ? 1 / norm : 1;
    }
    const Matrix<Scalar> scaled = a * scale.cast<Scalar>().asDiagonal();
    const Eigen::ColPivHouseholderQR<Matrix<Scalar>> factors(scaled);
    if (factors.rank() == a.cols()) {
        return scale.cast<Scalar>().asDiagonal() * factors.solve(b);
    }
    if (factors.rank() < std::min(a.rows(), a.cols())) {
        krt::warn("lstsq: argument 1 (A) has rank " + std::to_string(factors.rank()) + " of " +
                  std::to_string(std::min(a.rows(), a.cols())) + "; the solution of least norm is given");
    }
    return Eigen::CompleteOrthogonalDecomposition<Matrix<Scalar>>(a).solve(b);
}

}  // namespace

KRT_FUNCTION(solve) {
    in.expectCount(2, 2);
    const krt::Value first = in(0, "A");
    const krt::Value second = in(1, "b");
    linalg::withMatrices(first, second, [&](const auto& a, const auto& b) {
        linalg::requireSquare(a, first);
        linalg::requireSameRows(a, b, second);
        linalg::requireFinite(a, first);
        linalg::requireFinite(b, second);
        auto x = b;
        if (x.size() != 0) {
            x = factor(a, first).solve(b);
        }
        linalg::store(out, 0, x);
    });
}

KRT_FUNCTION(inv) {
    in.expectCount(1, 1);
    const krt::Value first = in(0, "A");
    linalg::withMatrix(first, [&](auto a) {
        linalg::requireSquare(a, first);
        linalg::requireFinite(a, first);
        if (a.size() != 0) {
            a = factor(a, first).inverse().eval();
        }
        linalg::store(out, 0, a);
    });
}

KRT_FUNCTION(lstsq) {
    in.expectCount(2, 2);
    const krt::Value first = in(0, "A");
    const krt::Value second = in(1, "b");
    linalg::withMatrices(first, second, [&](const auto& a, const auto& b) {
        using Result = std::decay_t<decltype(a)>;
        linalg::requireSameRows(a, b, second);
        linalg::requireFinite(a, first);
        linalg::requireFinite(b, second);
        const bool empty = a.size() == 0 || b.size() == 0;
        linalg::store<typename Result::Scalar>(out, 0, empty ? Result::Zero(a.cols(), b.cols()) : leastSquares(a, b));
    });
}
