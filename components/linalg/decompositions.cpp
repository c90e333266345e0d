// Singular values and eigenvalues.

#include "matrices.h"

#include <Eigen/Eigenvalues>
#include <Eigen/SVD>

#include <type_traits>

namespace {

using linalg::Complex;
using linalg::Matrix;

template <typename Solver>
void requireConverged(const Solver& solver, const krt::Value& value) {
    if (solver.info() != Eigen::Success) {
        krt::error("linalg:convergence", "the iteration for " + value.label() + " did not converge");
    }
}

template <typename Scalar>
void storeSingularValues(krt::Results& out, const Matrix<Scalar>& a, const krt::Value& value) {
    Matrix<double> values(0, 1);
    if (a.size() != 0) {
        const Eigen::BDCSVD<Matrix<Scalar>> decomposition(a);
        requireConverged(decomposition, value);
        values = decomposition.singularValues();
    }
    linalg::store(out, 0, values);
}

/// U, S and V: square U and V, or only as many columns as there are singular values.
template <typename Scalar>
void storeSingularVectors(krt::Results& out, const Matrix<Scalar>& a, const krt::Value& value, bool economy) {
    const Eigen::Index count = std::min(a.rows(), a.cols());
    Matrix<Scalar> u = Matrix<Scalar>::Identity(a.rows(), economy ? count : a.rows());
    Matrix<Scalar> v = Matrix<Scalar>::Identity(a.cols(), economy ? count : a.cols());
    Matrix<double> s = Matrix<double>::Zero(u.cols(), v.cols());
    if (a.size() != 0) {
        const unsigned options =
            economy ? Eigen::ComputeThinU | Eigen::ComputeThinV : Eigen::ComputeFullU | Eigen::ComputeFullV;
        const Eigen::BDCSVD<Matrix<Scalar>> decomposition(a, options);
        requireConverged(decomposition, value);
        u = decomposition.matrixU();
        v = decomposition.matrixV();
        s.diagonal() = decomposition.singularValues();
    }
    linalg::store(out, 0, u);
    linalg::store(out, 1, s);
    linalg::store(out, 2, v);
}

/// Stores real elements where no element has an imaginary part.
void storeReduced(krt::Results& out, int number, const Matrix<Complex>& matrix) {
    if ((matrix.imag().array() == 0).all()) {
        linalg::store<double>(out, number, matrix.real());
    } else {
        linalg::store(out, number, matrix);
    }
}

/// Stores the eigenvalues as a column, or the vectors and the values on the diagonal of a matrix.
template <typename Solver>
void storeEigen(krt::Results& out, const Solver& solver, const krt::Value& value, bool vectors) {
    requireConverged(solver, value);
    const Matrix<Complex> values = solver.eigenvalues().template cast<Complex>();
    if (!vectors) {
        storeReduced(out, 0, values);
        return;
    }
    storeReduced(out, 0, solver.eigenvectors().template cast<Complex>());
    storeReduced(out, 1, values.col(0).asDiagonal());
}

template <typename Scalar>
using GeneralSolver = std::conditional_t<std::is_same_v<Scalar, Complex>, Eigen::ComplexEigenSolver<Matrix<Scalar>>,
                                         Eigen::EigenSolver<Matrix<Scalar>>>;

}  // namespace

KRT_FUNCTION(svd) {
    in.expectCount(1, 2);
    const krt::Value first = in(0, "A");
    const bool economy = in.has(1);
    if (economy && in(1, "size").text() != "econ") {
        krt::error("linalg:value", in(1, "size").label() + " is '" + in(1, "size").text() + "', expected 'econ'");
    }
    if (out.wanted() == 2) {
        krt::error("linalg:outputs", "svd: 2 results asked for, expected 1 (the singular values) or 3 (U, S and V)");
    }
    linalg::withMatrix(first, [&](const auto& a) {
        linalg::requireFinite(a, first);
        if (out.wanted() <= 1) {
            storeSingularValues(out, a, first);
        } else {
            storeSingularVectors(out, a, first, economy);
        }
    });
}

KRT_FUNCTION(eig) {
    in.expectCount(1, 1);
    const krt::Value first = in(0, "A");
    linalg::withMatrix(first, [&](const auto& a) {
        using Square = std::decay_t<decltype(a)>;
        linalg::requireSquare(a, first);
        linalg::requireFinite(a, first);
        const bool vectors = out.wanted() > 1;
        if (a.size() == 0) {
            linalg::store<double>(out, 0, Matrix<double>(0, vectors ? 0 : 1));
            linalg::store<double>(out, 1, Matrix<double>(0, 0));
        } else if (a == a.adjoint()) {
            const int options = vectors ? Eigen::ComputeEigenvectors : Eigen::EigenvaluesOnly;
            storeEigen(out, Eigen::SelfAdjointEigenSolver<Square>(a, options), first, vectors);
        } else {
            storeEigen(out, GeneralSolver<typename Square::Scalar>(a, vectors), first, vectors);
        }
    });
}
