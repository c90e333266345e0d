#pragma once

/// Views on the elements of arrays. A view borrows: it is good as long as the array. Storage is column-major,
/// indices are zero-based. A view of an argument knows the argument's name, so that its checks can tell.

#include "krt/error.hpp"
#include "qx/qx.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace krt {

namespace detail {

/// Raises "<label> has 3 rows, expected 4".
inline void expectCount(const std::string& label, std::size_t actual, std::size_t expected, const char* singular,
                        const char* plural, const Location& at) {
    if (actual != expected) {
        error("krt:size",
              label + " has " + std::to_string(actual) + " " + (actual == 1 ? singular : plural) + ", expected " +
                  std::to_string(expected),
              at);
    }
}

}  // namespace detail

/// rows-by-columns elements; `Eigen::Map<const Eigen::MatrixXd>(m.data(), m.rows(), m.columns())` maps them.
template <typename T>
class MatrixView {
public:
    MatrixView(T* data, std::size_t rows, std::size_t columns, std::string label)
        : data_(data), rows_(rows), columns_(columns), label_(std::move(label)) {}

    T* data() const noexcept { return data_; }
    std::size_t rows() const noexcept { return rows_; }
    std::size_t columns() const noexcept { return columns_; }
    std::size_t size() const noexcept { return rows_ * columns_; }
    T& operator()(std::size_t row, std::size_t column) const noexcept { return data_[column * rows_ + row]; }
    T* column(std::size_t number) const noexcept { return data_ + number * rows_; }
    T* begin() const noexcept { return data_; }
    T* end() const noexcept { return data_ + size(); }

    const MatrixView& expectRows(std::size_t rows, const Location& at = Location()) const {
        detail::expectCount(label_, rows_, rows, "row", "rows", at);
        return *this;
    }
    const MatrixView& expectColumns(std::size_t columns, const Location& at = Location()) const {
        detail::expectCount(label_, columns_, columns, "column", "columns", at);
        return *this;
    }
    const MatrixView& expectSquare(const Location& at = Location()) const {
        if (rows_ != columns_) {
            error("krt:size",
                  label_ + " is " + std::to_string(rows_) + "-by-" + std::to_string(columns_) +
                      ", expected a square matrix",
                  at);
        }
        return *this;
    }
    const MatrixView& expectNotEmpty(const Location& at = Location()) const {
        if (size() == 0) {
            error("krt:size", label_ + " is empty", at);
        }
        return *this;
    }

private:
    T* data_;
    std::size_t rows_;
    std::size_t columns_;
    std::string label_;
};

/// The elements of a row or a column.
template <typename T>
class VectorView {
public:
    VectorView(T* data, std::size_t size, std::string label) : data_(data), size_(size), label_(std::move(label)) {}

    T* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    T& operator[](std::size_t index) const noexcept { return data_[index]; }
    T* begin() const noexcept { return data_; }
    T* end() const noexcept { return data_ + size_; }

    const VectorView& expectLength(std::size_t length, const Location& at = Location()) const {
        detail::expectCount(label_, size_, length, "element", "elements", at);
        return *this;
    }
    const VectorView& expectNotEmpty(const Location& at = Location()) const {
        if (size_ == 0) {
            error("krt:size", label_ + " is empty", at);
        }
        return *this;
    }

private:
    T* data_;
    std::size_t size_;
    std::string label_;
};

/// All elements of an array of any number of dimensions, in storage order.
template <typename T>
class ArrayView {
public:
    ArrayView(T* data, std::vector<std::size_t> dimensions) : data_(data), dimensions_(std::move(dimensions)) {
        for (const std::size_t extent : dimensions_) {
            size_ *= extent;
        }
    }

    T* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    const std::vector<std::size_t>& dimensions() const noexcept { return dimensions_; }
    T& operator[](std::size_t index) const noexcept { return data_[index]; }
    T* begin() const noexcept { return data_; }
    T* end() const noexcept { return data_ + size_; }

private:
    T* data_;
    std::vector<std::size_t> dimensions_;
    std::size_t size_ = 1;
};

/// A complex matrix as its two parts; `imag` is null when there is no imaginary part.
class ComplexMatrixView {
public:
    ComplexMatrixView(const double* real, const double* imag, std::size_t rows, std::size_t columns)
        : real_(real), imag_(imag), rows_(rows), columns_(columns) {}

    const double* real() const noexcept { return real_; }
    const double* imag() const noexcept { return imag_; }
    std::size_t rows() const noexcept { return rows_; }
    std::size_t columns() const noexcept { return columns_; }
    std::complex<double> operator()(std::size_t row, std::size_t column) const noexcept {
        const std::size_t index = column * rows_ + row;
        return {real_[index], imag_ == nullptr ? 0.0 : imag_[index]};
    }

private:
    const double* real_;
    const double* imag_;
    std::size_t rows_;
    std::size_t columns_;
};

/// A real sparse matrix by compressed columns, in the form that
/// `Eigen::Map<const Eigen::SparseMatrix<double>>(rows, columns, storedCount, columnStart, rowIndex, values)` takes.
class SparseView {
public:
    explicit SparseView(const qxArray* array) : array_(array) {}

    std::size_t rows() const noexcept { return array_->get_dimensions()[0]; }
    std::size_t columns() const noexcept { return array_->get_dimensions()[1]; }
    std::size_t storedCount() const noexcept { return array_->columnStartTable()[columns()]; }
    /// columns() + 1 entries.
    const std::int32_t* columnStart() const noexcept {
        return reinterpret_cast<const std::int32_t*>(array_->columnStartTable());
    }
    const std::int32_t* rowIndex() const noexcept {
        return reinterpret_cast<const std::int32_t*>(array_->rowIndexTable());
    }
    const double* values() const noexcept { return static_cast<const double*>(array_->realData()); }

private:
    const qxArray* array_;
};

}  // namespace krt
