#pragma once

/// What a component function can do beside computing: make arrays of plain values, print, call other functions,
/// function handles and Java objects.

#include "krt/value.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace krt {

// ---- Arrays of plain values. They belong to the call.

inline qxArray* toArray(double value) { return checked(qxCreateDoubleScalar(value)); }
inline qxArray* toArray(bool value) { return checked(qxCreateLogicalScalar(value)); }
inline qxArray* toArray(const char* text) { return checked(qxCreateString(text)); }
inline qxArray* toArray(const std::string& text) { return checked(qxCreateString(text.c_str())); }
/// The very array, not a copy: for arguments of calls, and for results, which the runtime copies where need be.
inline qxArray* toArray(qxArray* array) { return array; }
inline qxArray* toArray(const qxArray* array) { return const_cast<qxArray*>(array); }
inline qxArray* toArray(const Value& value) { return const_cast<qxArray*>(value.array()); }
template <typename T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
qxArray* toArray(T value) {
    return toArray(static_cast<double>(value));
}

/// rows-by-columns doubles, copied from column-major storage.
inline qxArray* matrixOf(const double* data, std::size_t rows, std::size_t columns) {
    qxArray* array = krtMakeDoubleMatrix(rows, columns);
    std::copy(data, data + rows * columns, static_cast<double*>(checked(array)->realData()));
    return array;
}
/// A row.
inline qxArray* toArray(const std::vector<double>& values) { return matrixOf(values.data(), 1, values.size()); }
inline qxArray* toArray(const VectorView<const double>& values) { return matrixOf(values.data(), 1, values.size()); }
inline qxArray* toArray(const MatrixView<const double>& m) { return matrixOf(m.data(), m.rows(), m.columns()); }

// ---- Printing

/// The way to print for the instance of the running call, also from a thread of the component's own and after the
/// call. Copies are cheap. Made on the thread of the call.
class Printer {
public:
    Printer() : printer_(krtGetPrinter(krtCurrentCall())) {}
    Printer(const Printer& other) noexcept : printer_(krtSharePrinter(other.printer_)) {}
    Printer& operator=(Printer other) noexcept {
        std::swap(printer_, other.printer_);
        return *this;
    }
    ~Printer() { krtReleasePrinter(printer_); }

    void print(const std::string& text) const { krtPrinterPrint(printer_, text.c_str()); }
    void warn(const std::string& message) const { krtPrinterWarn(printer_, message.c_str()); }

private:
    krtPrinter* printer_;
};

/// Ordinary output, as it is. On a thread of the component's own it goes to the default handlers: use a Printer.
inline void print(const std::string& text) { krtPrint(krtCurrentCall(), text.c_str()); }
/// A line "Warning: message".
inline void warn(const std::string& message) { krtWarn(krtCurrentCall(), message.c_str()); }

// ---- Calls

namespace detail {

/// Results of a call as values with labels for errors.
inline std::vector<Value> labelled(const std::string& name, const std::vector<qxArray*>& arrays) {
    std::vector<Value> values;
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        values.emplace_back(arrays[i], name + ": result " + std::to_string(i + 1));
    }
    return values;
}

/// Runs `body`, whose temporary arrays end with it, and gives the arrays that it returns to the running call: a loop
/// of many calls holds on to no more than their results.
template <typename Body>
std::vector<qxArray*> withTemporaries(Body body) {
    std::vector<qxArray*> results;
    {
        const qxCallScope temporaries;
        results = body();
        for (qxArray* result : results) {
            if (result != nullptr) {
                qxSetArrayScope(result, qxFREE_SCOPE);
            }
        }
    }
    for (qxArray* result : results) {
        if (result != nullptr) {
            qxSetArrayScope(result, qxCALL_SCOPE);
        }
    }
    return results;
}

inline std::vector<qxArray*> callFunction(const std::string& name, int nlhs, const std::vector<qxArray*>& arguments,
                                          const Location& at) {
    std::vector<qxArray*> results(nlhs < 0 ? 0 : static_cast<std::size_t>(nlhs));
    throwFailure(krtCallFunction(krtCurrentCall(), name.c_str(), nlhs, results.data(),
                                 static_cast<int>(arguments.size()), arguments.data(), at.file, at.line));
    return results;
}

inline std::vector<qxArray*> callHandle(const qxArray* handle, int nlhs, const std::vector<qxArray*>& arguments,
                                        const Location& at) {
    std::vector<qxArray*> results(nlhs < 0 ? 0 : static_cast<std::size_t>(nlhs));
    throwFailure(krtCallHandle(krtCurrentCall(), handle, nlhs, results.data(), static_cast<int>(arguments.size()),
                               arguments.data(), at.file, at.line));
    return results;
}

inline qxArray* callJava(const qxArray* object, const std::string& method, const std::vector<qxArray*>& arguments,
                         const Location& at) {
    qxArray* result = nullptr;
    throwFailure(krtCallJava(krtCurrentCall(), object, method.c_str(), static_cast<int>(arguments.size()),
                             arguments.data(), &result, at.file, at.line));
    return result;
}

}  // namespace detail

/// Calls a function of the component with a list of arguments. Gives `nlhs` values, missing where the function gave
/// none. Throws Error with the stack of both functions.
inline std::vector<Value> callWith(const std::string& name, int nlhs, const std::vector<qxArray*>& arguments,
                                   const Location& at = Location()) {
    return detail::labelled(name, detail::callFunction(name, nlhs, arguments, at));
}

/// Names a function and the place of the call: `krt::call("norm")(x)`.
class Call {
public:
    Call(std::string name, int nlhs, const Location& at) : name_(std::move(name)), nlhs_(nlhs), at_(at) {}

    /// The first result, missing when there is none.
    template <typename... Arguments>
    Value operator()(const Arguments&... arguments) const {
        std::vector<Value> results = all(arguments...);
        return results.empty() ? Value(nullptr, name_ + ": result 1") : results.front();
    }
    template <typename... Arguments>
    std::vector<Value> all(const Arguments&... arguments) const {
        return detail::labelled(name_, detail::withTemporaries([&] {
                                    return detail::callFunction(name_, nlhs_, {toArray(arguments)...}, at_);
                                }));
    }

private:
    std::string name_;
    int nlhs_;
    Location at_;
};

inline Call call(std::string name, int nlhs = 1, const Location& at = Location()) {
    return {std::move(name), nlhs, at};
}

/// A function handle.
class Function {
public:
    /// An array that is a function handle; borrowed. `at` stands for the calls in the stack of a failure.
    explicit Function(const qxArray* handle, const Location& at = Location()) : handle_(handle), at_(at) {}
    /// A handle of a function of this component. The array belongs to the call.
    explicit Function(const std::string& name, const Location& at = Location())
        : handle_(checked(krtMakeFunctionHandle(name.c_str()))), at_(at) {}

    const qxArray* array() const noexcept { return handle_; }
    std::string name() const { return qxGetFunctionName(handle_); }

    /// Calls it for one result.
    template <typename... Arguments>
    Value operator()(const Arguments&... arguments) const {
        const auto results =
            detail::withTemporaries([&] { return detail::callHandle(handle_, 1, {toArray(arguments)...}, at_); });
        return detail::labelled(name(), results).front();
    }
    std::vector<Value> callWith(int nlhs, const std::vector<qxArray*>& arguments,
                                const Location& at = Location()) const {
        return detail::labelled(name(), detail::callHandle(handle_, nlhs, arguments, at));
    }

private:
    const qxArray* handle_;
    Location at_;
};

inline qxArray* toArray(const Function& function) { return const_cast<qxArray*>(function.array()); }

/// A Java object that was given as an argument, or came from another one. Methods are found by name and number of
/// arguments among the public ones of its class and interfaces, so that a lambda works as well.
class JavaObject {
public:
    /// An array that wraps a Java object; borrowed. `at` stands for the calls in the stack of a failure.
    explicit JavaObject(const qxArray* object, const Location& at = Location()) : object_(object), at_(at) {}

    const qxArray* array() const noexcept { return object_; }

    /// The result is 0-by-0 for null and for void. Throws Error with the text of the Java exception.
    template <typename... Arguments>
    Value call(const std::string& method, const Arguments&... arguments) const {
        const auto results = detail::withTemporaries(
            [&] { return std::vector<qxArray*>{detail::callJava(object_, method, {toArray(arguments)...}, at_)}; });
        return {results.front(), "result of the Java method " + method};
    }
    Value callWith(const std::string& method, const std::vector<qxArray*>& arguments,
                   const Location& at = Location()) const {
        return {detail::callJava(object_, method, arguments, at), "result of the Java method " + method};
    }

    // The functional interfaces of java.util.function that numeric code meets. `Argument`: a number, an array, a
    // vector or matrix view.
    template <typename... Arguments>
    double applyAsDouble(const Arguments&... arguments) const {
        const qxCallScope temporaries;
        return callWith("applyAsDouble", {toArray(arguments)...}, at_).scalar(at_);
    }
    template <typename... Arguments>
    Value apply(const Arguments&... arguments) const {
        return call("apply", arguments...);
    }
    template <typename... Arguments>
    bool test(const Arguments&... arguments) const {
        const qxCallScope temporaries;
        return callWith("test", {toArray(arguments)...}, at_).logical(at_);
    }

private:
    const qxArray* object_;
    Location at_;
};

inline qxArray* toArray(const JavaObject& object) { return const_cast<qxArray*>(object.array()); }

inline Function Value::function(const Location& at) const {
    if (classId() != qxFUNCTION_CLASS) {
        unexpected("a function handle", at);
    }
    return Function(array_, at);
}

inline JavaObject Value::javaObject(const Location& at) const {
    if (krtIsJavaObject(array_) == 0) {
        unexpected("a Java object", at);
    }
    return JavaObject(array_, at);
}

}  // namespace krt
