#pragma once

/// Arguments of the runtime as matrices of Eigen, and back.

#include "krt/component.hpp"

#include <Eigen/Core>

#include <complex>
#include <string>
#include <type_traits>

namespace linalg {

using Eigen::Index;
using Complex = std::complex<double>;

template <typename Scalar>
using Matrix = Eigen::Matrix<Scalar, Eigen::Dynamic, Eigen::Dynamic>;

inline bool isComplex(const krt::Value& value) { return !value.missing() && qxIsComplex(value.array()); }

/// A copy of an argument: of any real numeric class, sparse too, or of complex doubles.
template <typename Scalar>
Matrix<Scalar> read(const krt::Value& value, const krt::Location& at = krt::Location()) {
    if constexpr (std::is_same_v<Scalar, Complex>) {
        if (isComplex(value)) {
            const krt::ComplexMatrixView view = value.complexMatrix(at);
            return Matrix<Complex>::NullaryExpr(
                static_cast<Index>(view.rows()), static_cast<Index>(view.columns()), [&](Index row, Index column) {
                    return view(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
                });
        }
    }
    const krt::MatrixView<const double> view = value.matrix(at);
    return Eigen::Map<const Matrix<double>>(view.data(), static_cast<Index>(view.rows()),
                                            static_cast<Index>(view.columns()))
        .template cast<Scalar>();
}

/// Runs `body(A)` with a real or a complex copy of an argument.
template <typename Body>
void withMatrix(const krt::Value& a, Body body) {
    if (isComplex(a)) {
        body(read<Complex>(a));
    } else {
        body(read<double>(a));
    }
}

/// Runs `body(A, b)` with copies of two arguments, both complex where one is.
template <typename Body>
void withMatrices(const krt::Value& a, const krt::Value& b, Body body) {
    if (isComplex(a) || isComplex(b)) {
        body(read<Complex>(a), read<Complex>(b));
    } else {
        body(read<double>(a), read<double>(b));
    }
}

template <typename Scalar>
void store(krt::Results& out, int number, const Matrix<Scalar>& matrix) {
    const auto rows = static_cast<std::size_t>(matrix.rows());
    const auto columns = static_cast<std::size_t>(matrix.cols());
    if constexpr (std::is_same_v<Scalar, Complex>) {
        const auto parts = out.complexMatrix(number, rows, columns);
        Eigen::Map<Matrix<double>>(parts.first.data(), matrix.rows(), matrix.cols()) = matrix.real();
        Eigen::Map<Matrix<double>>(parts.second.data(), matrix.rows(), matrix.cols()) = matrix.imag();
    } else {
        Eigen::Map<Matrix<double>>(out.matrix(number, rows, columns).data(), matrix.rows(), matrix.cols()) = matrix;
    }
}

inline std::string shapeText(Index rows, Index columns) {
    return std::to_string(rows) + "-by-" + std::to_string(columns);
}

template <typename Scalar>
void requireSquare(const Matrix<Scalar>& a, const krt::Value& value, const krt::Location& at = krt::Location()) {
    if (a.rows() != a.cols()) {
        krt::error("linalg:size", value.label() + " is " + shapeText(a.rows(), a.cols()) + ", expected a square matrix",
                   at);
    }
}

/// Iterations that work towards a limit have none where an element is infinite or no number, and a factorisation
/// spreads such an element over the whole result.
template <typename Scalar>
void requireFinite(const Matrix<Scalar>& a, const krt::Value& value, const krt::Location& at = krt::Location()) {
    if (!a.allFinite()) {
        krt::error("linalg:finite", value.label() + " has an element that is infinite or not a number", at);
    }
}

template <typename Scalar>
void requireSameRows(const Matrix<Scalar>& a, const Matrix<Scalar>& b, const krt::Value& value,
                     const krt::Location& at = krt::Location()) {
    if (a.rows() != b.rows()) {
        krt::error("linalg:size",
                   value.label() + " has " + std::to_string(b.rows()) + " rows, expected " + std::to_string(a.rows()) +
                       ", as many as argument 1 has",
                   at);
    }
}

}  // namespace linalg
