#pragma once

/// Failures of component functions, with the source lines that led to them.

#include "krt/component.h"

#include <exception>
#include <string>
#include <utility>

namespace krt {

/// A place in the source. As a default argument it is the place of the call.
struct Location {
    Location(const char* sourceFile = __builtin_FILE(), int sourceLine = __builtin_LINE())
        : file(sourceFile), line(sourceLine) {}
    const char* file;
    int line;
};

/// A failure of a function, its own or that of one it called. Copies share it. Caught and dropped, it is over.
class Error : public std::exception {
public:
    /// Takes the failure over.
    explicit Error(krtFailure* failure) noexcept : failure_(failure) {}
    Error(const Error& other) noexcept : std::exception(other), failure_(krtShareFailure(other.failure_)) {}
    Error& operator=(Error other) noexcept {
        std::swap(failure_, other.failure_);
        return *this;
    }
    ~Error() override { krtReleaseFailure(failure_); }

    const char* what() const noexcept override { return krtFailureMessage(failure_); }
    /// Such as "solve:singular"; "" when there is none.
    const char* identifier() const noexcept { return krtFailureIdentifier(failure_); }
    const krtFailure* failure() const noexcept { return failure_; }

private:
    krtFailure* failure_;
};

/// Ends the function with a failure at this line. Within a thread of the component's own the stack is that line.
[[noreturn]] inline void error(const std::string& identifier, const std::string& message,
                               const Location& at = Location()) {
    throw Error(krtMakeFailure(krtCurrentCall(), identifier.c_str(), message.c_str(), at.file, at.line));
}

/// Throws what a call of the runtime gave, unless it is null.
inline void throwFailure(krtFailure* failure) {
    if (failure != nullptr) {
        throw Error(failure);
    }
}

/// A line of the stack for a helper function: `const krt::Frame frame;` as its first statement. Without effect on a
/// thread of the component's own.
class Frame {
public:
    explicit Frame(const char* function = __builtin_FUNCTION(), const char* file = __builtin_FILE(),
                   int line = __builtin_LINE())
        : call_(krtCurrentCall()), exceptions_(std::uncaught_exceptions()) {
        if (call_ != nullptr) {
            krtEnterFrame(call_, function, file, line);
        }
    }
    ~Frame() {
        if (call_ != nullptr) {
            krtLeaveFrame(call_, std::uncaught_exceptions() > exceptions_ ? 1 : 0);
        }
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

private:
    krtCall* call_;
    int exceptions_;
};

/// Tells the runtime that the running function has come to this line, for a failure that knows no line of its own.
inline void markLine(const Location& at = Location()) {
    if (krtCall* call = krtCurrentCall()) {
        krtMarkLine(call, at.file, at.line);
    }
}

}  // namespace krt
