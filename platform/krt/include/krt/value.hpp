#pragma once

/// An array as a component reads it: typed views with checks whose errors name the argument.

#include "krt/error.hpp"
#include "krt/views.hpp"
#include "qx/qx.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace krt {

class Cell;
class Struct;
class Function;
class JavaObject;

/// The class of arrays with elements of type T.
template <typename T>
constexpr qxClassID classOf() {
    using Element = std::remove_const_t<T>;
    if constexpr (std::is_same_v<Element, double>) {
        return qxDOUBLE_CLASS;
    } else if constexpr (std::is_same_v<Element, float>) {
        return qxSINGLE_CLASS;
    } else if constexpr (std::is_same_v<Element, bool>) {
        return qxLOGICAL_CLASS;
    } else if constexpr (std::is_same_v<Element, char16_t>) {
        return qxCHAR_CLASS;
    } else {
        static_assert(std::is_integral_v<Element> && sizeof(Element) <= 8, "no array class has such elements");
        constexpr int width = sizeof(Element) == 1 ? 0 : sizeof(Element) == 2 ? 2 : sizeof(Element) == 4 ? 4 : 6;
        return static_cast<qxClassID>(qxINT8_CLASS + width + (std::is_unsigned_v<Element> ? 1 : 0));
    }
}

/// Such as "a 3-by-4 int32 array".
inline std::string describe(const qxArray* array) {
    if (array == nullptr) {
        return "missing";
    }
    if (krtIsJavaObject(array) != 0) {
        return "a Java object";
    }
    if (qxGetClassID(array) == qxFUNCTION_CLASS) {
        return "a function handle";
    }
    std::string text = "a ";
    for (std::uint32_t i = 0; i < array->numberOfDimensions(); ++i) {
        text += (i == 0 ? "" : "-by-") + std::to_string(array->get_dimensions()[i]);
    }
    text += qxIsSparse(array) ? " sparse " : " ";
    text += qxIsComplex(array) ? "complex " : "";
    return text + qxGetClassName(qxGetClassID(array)) + " array";
}

/// A number as errors show it: 2.5, 1e+20, nan.
inline std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

/// Passes a new array on, or ends the function when there is none.
inline qxArray* checked(qxArray* array) {
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

/// An input, a cell or a field: borrowed, and possibly missing. Each reading member raises an error that names it
/// when it is missing or of another kind.
class Value {
public:
    Value(const qxArray* array, std::string label) : array_(array), label_(std::move(label)) {}

    const qxArray* array() const noexcept { return array_; }
    bool missing() const noexcept { return array_ == nullptr; }
    /// Such as "solve: argument 2 (b)".
    const std::string& label() const noexcept { return label_; }

    qxClassID classId() const { return array_ == nullptr ? qxUNKNOWN_CLASS : qxGetClassID(array_); }
    bool isText() const { return classId() == qxCHAR_CLASS; }
    bool isNumeric() const {
        const qxClassID id = classId();
        return id == qxLOGICAL_CLASS || (id >= qxDOUBLE_CLASS && id <= qxUINT64_CLASS);
    }

    /// A single real number of any numeric class, or a logical.
    double scalar(const Location& at = Location()) const {
        requireReal("a real scalar", at);
        if (qxGetNumberOfElements(array_) != 1) {
            unexpected("a real scalar", at);
        }
        return krtScalar(array_);
    }
    double scalarOr(double fallback, const Location& at = Location()) const {
        return missing() ? fallback : scalar(at);
    }

    /// A whole number within the bounds, both included.
    std::int64_t integer(std::int64_t lowest = -(std::int64_t{1} << 53), std::int64_t highest = std::int64_t{1} << 53,
                         const Location& at = Location()) const {
        const double value = scalar(at);
        // The highest bound of all rounds to 2^63, which is none of them.
        if (std::nearbyint(value) != value || value < static_cast<double>(lowest) ||
            value > static_cast<double>(highest) || value >= 0x1p63) {
            error("krt:value",
                  label_ + " is " + numberText(value) + ", expected a whole number from " + std::to_string(lowest) +
                      " to " + std::to_string(highest),
                  at);
        }
        return static_cast<std::int64_t>(value);
    }

    bool logical(const Location& at = Location()) const { return scalar(at) != 0.0; }

    /// A char row as UTF-8; "" for an empty char array.
    std::string text(const Location& at = Location()) const {
        if (!isText() || (qxGetM(array_) != 1 && !qxIsEmpty(array_))) {
            unexpected("a row of text", at);
        }
        return qxGetString(array_);
    }

    /// A real matrix of doubles. Other numeric classes, logicals and sparse matrices are converted; the copy
    /// belongs to the call.
    MatrixView<const double> matrix(const Location& at = Location()) const {
        const qxArray* doubles = asDoubles("a real matrix", at);
        if (doubles->numberOfDimensions() != 2) {
            unexpected("a real matrix", at);
        }
        return {static_cast<const double*>(doubles->realData()), qxGetM(doubles), qxGetN(doubles), label_};
    }

    /// A real row or column of doubles, converted as by matrix(). An empty array has no element.
    VectorView<const double> vector(const Location& at = Location()) const {
        const qxArray* doubles = asDoubles("a real vector", at);
        const std::size_t count = qxGetNumberOfElements(doubles);
        if (count != 0 && qxGetM(doubles) != count && qxGetN(doubles) != count) {
            unexpected("a real vector", at);
        }
        return {static_cast<const double*>(doubles->realData()), count, label_};
    }

    /// All elements of a dense array of exactly the class of T: any integer type, float, double, bool, char16_t.
    template <typename T>
    ArrayView<const T> elements(const Location& at = Location()) const {
        if (classId() != classOf<T>() || qxIsSparse(array_)) {
            unexpected(std::string("a full ") + qxGetClassName(classOf<T>()) + " array", at);
        }
        return {static_cast<const T*>(array_->realData()), dimensions()};
    }

    /// A real or complex matrix of doubles; other classes are not converted.
    ComplexMatrixView complexMatrix(const Location& at = Location()) const {
        if (classId() != qxDOUBLE_CLASS || qxIsSparse(array_) || array_->numberOfDimensions() != 2) {
            unexpected("a full matrix of doubles", at);
        }
        const void* imag = qxIsComplex(array_) ? array_->imagData() : nullptr;
        return {static_cast<const double*>(array_->realData()), static_cast<const double*>(imag), qxGetM(array_),
                qxGetN(array_)};
    }

    /// A real sparse matrix of doubles; a full matrix of doubles is converted.
    SparseView sparse(const Location& at = Location()) const {
        requireReal("a real sparse matrix", at);
        if (classId() != qxDOUBLE_CLASS || array_->numberOfDimensions() != 2) {
            unexpected("a real sparse matrix", at);
        }
        return SparseView(qxIsSparse(array_) ? array_ : checked(qxMustBeSparse(array_)));
    }

    Cell cell(const Location& at = Location()) const;
    /// A struct array; its element 0 unless told otherwise.
    Struct structure(std::size_t element = 0, const Location& at = Location()) const;
    Function function(const Location& at = Location()) const;
    JavaObject javaObject(const Location& at = Location()) const;

    std::vector<std::size_t> dimensions() const {
        return {array_->get_dimensions(), array_->get_dimensions() + array_->numberOfDimensions()};
    }

    /// Raises "<label> is a 1-by-2 cell array, expected <expected>", or "<label> is missing".
    [[noreturn]] void unexpected(const std::string& expected, const Location& at = Location()) const {
        if (missing()) {
            error("krt:argument", label_ + " is missing, expected " + expected, at);
        }
        error("krt:argument", label_ + " is " + describe(array_) + ", expected " + expected, at);
    }

private:
    void requireReal(const char* expected, const Location& at) const {
        if (!isNumeric() || qxIsComplex(array_)) {
            unexpected(expected, at);
        }
    }

    const qxArray* asDoubles(const char* expected, const Location& at) const {
        requireReal(expected, at);
        const qxArray* doubles =
            classId() == qxDOUBLE_CLASS ? array_ : checked(qxCreateConvertedCopy(array_, qxDOUBLE_CLASS));
        return qxIsSparse(doubles) ? fullCopy(SparseView(doubles)) : doubles;
    }

    static const qxArray* fullCopy(const SparseView& source) {
        qxArray* full = checked(qxCreateDoubleMatrix(static_cast<std::uint32_t>(source.rows()),
                                                     static_cast<std::uint32_t>(source.columns()), qxREAL));
        auto* target = static_cast<double*>(full->realData());
        for (std::size_t column = 0; column < source.columns(); ++column) {
            for (auto i = source.columnStart()[column]; i < source.columnStart()[column + 1]; ++i) {
                target[column * source.rows() + static_cast<std::size_t>(source.rowIndex()[i])] = source.values()[i];
            }
        }
        return full;
    }

    const qxArray* array_;
    std::string label_;
};

/// The elements of a cell array by linear index. An empty slot is a missing value.
class Cell {
public:
    explicit Cell(Value value) : value_(std::move(value)) {}

    std::size_t size() const { return qxGetNumberOfElements(value_.array()); }
    std::vector<std::size_t> dimensions() const { return value_.dimensions(); }
    Value operator[](std::size_t index) const {
        const std::string label = value_.label() + ", element " + std::to_string(index);
        return {index < size() ? qxGetCell(value_.array(), index) : nullptr, label};
    }

private:
    Value value_;
};

/// The fields of one element of a struct array. A field that is not there is a missing value.
class Struct {
public:
    Struct(Value value, std::size_t element) : value_(std::move(value)), element_(element) {}

    /// Number of elements of the whole array.
    std::size_t size() const { return qxGetNumberOfElements(value_.array()); }
    bool has(const char* field) const { return qxGetFieldNumber(value_.array(), field) >= 0; }
    std::vector<std::string> fields() const {
        std::vector<std::string> names;
        for (std::uint32_t i = 0; i < value_.array()->get_number_of_struct_fields(); ++i) {
            names.emplace_back(value_.array()->get_struct_field_name_by_number(i));
        }
        return names;
    }
    Value operator[](const char* field) const {
        return {has(field) ? qxGetField(value_.array(), element_, field) : nullptr,
                value_.label() + ", field " + field};
    }

private:
    Value value_;
    std::size_t element_;
};

inline Cell Value::cell(const Location& at) const {
    if (classId() != qxCELL_CLASS) {
        unexpected("a cell array", at);
    }
    return Cell(*this);
}

inline Struct Value::structure(std::size_t element, const Location& at) const {
    if (classId() != qxSTRUCT_CLASS) {
        unexpected("a struct array", at);
    }
    if (element >= qxGetNumberOfElements(array_)) {
        error("krt:size", label_ + " has no element " + std::to_string(element), at);
    }
    return {*this, element};
}

}  // namespace krt
