#pragma once

/// For authors of components in C++:
///
///     #include "krt/component.hpp"
///
///     KRT_FUNCTION(scale) {
///         const auto a = in(0, "a").matrix();
///         const double factor = in(1, "factor").scalarOr(2.0);
///         auto scaled = out.matrix(0, a.rows(), a.columns());
///         std::transform(a.begin(), a.end(), scaled.begin(), [&](double x) { return factor * x; });
///     }
///
/// `in` (krt::Arguments) gives the inputs by zero-based number and the name that errors show; `out` (krt::Results)
/// takes the results. Every std::exception ends the function with a failure that its caller sees as an exception
/// with the stack. Arrays made along the way belong to the call and need no clean-up.

#include "krt/call.hpp"

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace krt {

/// The inputs of a call.
class Arguments {
public:
    Arguments(const char* function, int count, qxArray* const* arrays)
        : function_(function), count_(count), arrays_(arrays) {}

    int count() const noexcept { return count_; }
    bool has(int number) const noexcept { return number >= 0 && number < count_ && arrays_[number] != nullptr; }
    /// Input `number`, missing when there are fewer. `name` is what errors call it.
    Value operator()(int number, const char* name) const {
        return {has(number) ? arrays_[number] : nullptr,
                std::string(function_) + ": argument " + std::to_string(number + 1) + " (" + name + ")"};
    }
    /// Raises an error unless there are from `least` to `most` inputs.
    void expectCount(int least, int most, const Location& at = Location()) const {
        if (count_ < least || count_ > most) {
            error("krt:arguments",
                  std::string(function_) + ": " + std::to_string(count_) + " arguments given, expected " +
                      std::to_string(least) + (most == least ? "" : " to " + std::to_string(most)),
                  at);
        }
    }

private:
    const char* function_;
    int count_;
    qxArray* const* arrays_;
};

/// The results of a call. Storing one that the caller did not ask for is fine; it is dropped.
class Results {
public:
    Results(int wanted, qxArray** slots) : wanted_(wanted), slots_(slots) {}

    /// How many the caller asked for.
    int wanted() const noexcept { return wanted_; }
    /// Whether there is a use for a result; the first one is taken also when none was asked for.
    bool wants(int number) const noexcept { return number >= 0 && number < std::max(wanted_, 1); }

    /// Stores an array: one made in this call, an input, or an element of one.
    void array(int number, qxArray* value) {
        if (wants(number)) {
            slots_[number] = value;
        }
    }
    /// Stores a number, logical, text, vector (as a row), view, function handle, Java object or value.
    template <typename T>
    void set(int number, const T& value) {
        array(number, toArray(value));
    }

    /// A new matrix of doubles, all zero, to be filled.
    MatrixView<double> matrix(int number, std::size_t rows, std::size_t columns) {
        qxArray* made = checked(krtMakeDoubleMatrix(rows, columns));
        array(number, made);
        return {static_cast<double*>(made->realData()), rows, columns, "result " + std::to_string(number + 1)};
    }
    VectorView<double> column(int number, std::size_t count) { return vectorOf(matrix(number, count, 1)); }
    VectorView<double> row(int number, std::size_t count) { return vectorOf(matrix(number, 1, count)); }

    /// A new array of the class of T with these extents, all zero, to be filled.
    template <typename T>
    ArrayView<T> elements(int number, const std::vector<std::size_t>& dimensions) {
        qxArray* made = create(dimensions, [](std::uint32_t count, const std::uint32_t* extents) {
            return qxCreateNumericArray(count, extents, classOf<T>(), qxREAL);
        });
        array(number, made);
        return {static_cast<T*>(made->realData()), dimensions};
    }

    /// A new complex matrix of doubles: its real and its imaginary part, both zero, to be filled.
    std::pair<MatrixView<double>, MatrixView<double>> complexMatrix(int number, std::size_t rows, std::size_t columns) {
        qxArray* made = create({rows, columns}, [](std::uint32_t count, const std::uint32_t* extents) {
            return qxCreateNumericArray(count, extents, qxDOUBLE_CLASS, qxCOMPLEX);
        });
        array(number, made);
        const std::string label = "result " + std::to_string(number + 1);
        return {{static_cast<double*>(made->realData()), rows, columns, label},
                {static_cast<double*>(made->imagData()), rows, columns, label}};
    }

    /// A new cell array with empty slots; `setCell` fills them.
    qxArray* cell(int number, std::size_t rows, std::size_t columns) {
        qxArray* made = create({rows, columns}, qxCreateCellArray);
        array(number, made);
        return made;
    }
    /// A new 1-by-1 struct without fields; `setField` adds them.
    qxArray* structure(int number) {
        qxArray* made = checked(qxCreateStructMatrix(1, 1, 0, nullptr));
        array(number, made);
        return made;
    }

private:
    static VectorView<double> vectorOf(const MatrixView<double>& made) { return {made.data(), made.size(), "result"}; }

    template <typename Make>
    static qxArray* create(const std::vector<std::size_t>& dimensions, Make make) {
        std::vector<std::uint32_t> extents;
        for (const std::size_t extent : dimensions) {
            if (extent > 0x7FFFFFFF) {
                throw std::bad_alloc();
            }
            extents.push_back(static_cast<std::uint32_t>(extent));
        }
        return checked(make(static_cast<std::uint32_t>(extents.size()), extents.data()));
    }

    int wanted_;
    qxArray** slots_;
};

/// An array that can be put into a cell or struct slot: a new one is itself, a borrowed one is duplicated.
template <typename T>
qxArray* ownedArray(const T& value) {
    if constexpr (std::is_convertible_v<T, const qxArray*> || std::is_same_v<T, Value> || std::is_same_v<T, Function> ||
                  std::is_same_v<T, JavaObject>) {
        const qxArray* source = toArray(value);
        return source == nullptr ? nullptr : checked(qxDuplicateArray(source));
    } else {
        return toArray(value);
    }
}

/// Stores a value, a copy where it is an array, in a slot of a cell made in this call.
template <typename T>
void setCell(qxArray* cell, std::size_t index, const T& value) {
    qxArray* old = qxGetCell(cell, index);
    qxSetCell(cell, index, ownedArray(value));
    qxDestroyArray(old);
}

/// Stores a value, a copy where it is an array, in a field of a struct made in this call; the field is added.
template <typename T>
void setField(qxArray* structure, const char* field, const T& value, std::size_t element = 0) {
    const int number = qxAddField(structure, field);
    if (number < 0) {
        throw std::bad_alloc();
    }
    setCell(structure, element * structure->get_number_of_struct_fields() + static_cast<std::size_t>(number), value);
}

/// Runs the body of a function at the component's edge: no std::exception passes.
inline void runFunction(void (*body)(const Arguments&, Results&), krtCall* call, const Location& at, int nlhs,
                        qxArray** plhs, int nrhs, qxArray* const* prhs) {
    krtMarkLine(call, at.file, at.line);
    try {
        Results results(nlhs, plhs);
        body(Arguments(krtFunctionName(call), nrhs, prhs), results);
    } catch (const Error& failure) {
        krtFailWith(call, failure.failure());
    } catch (const std::bad_alloc&) {
        krtFail(call, "krt:memory", "out of memory", nullptr, 0);
    } catch (const std::exception& failure) {
        krtFail(call, "", failure.what(), nullptr, 0);
    }
}

}  // namespace krt

/// Defines the entry of a function; the body follows, with `in` and `out`.
#define KRT_FUNCTION(name)                                                                                     \
    static void krtBodyOf_##name(const krt::Arguments& in, krt::Results& out);                                 \
    extern "C" KRT_EXPORT void name(krtCall* call, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs) { \
        krt::runFunction(krtBodyOf_##name, call, krt::Location(), nlhs, plhs, nrhs, prhs);                     \
    }                                                                                                          \
    static void krtBodyOf_##name([[maybe_unused]] const krt::Arguments& in, [[maybe_unused]] krt::Results& out)
