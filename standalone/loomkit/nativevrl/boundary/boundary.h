#pragma once

/// The line between Java and the library. A native method returns in one of two states: it finished and returned
/// a value, or a Java exception is pending and it returned the neutral value of its type. How a native exception
/// becomes a Java one is decided in this folder and nowhere else: an export names one of these shapes and says what
/// goes into it; code below an export names castGuarded or sparseGuarded, which raise and throw on to the export's.
/// Only the listed types are caught; anything else leaves the native frame. Memory that the library itself can't have
/// is an OutOfMemoryError, but in a shape that names one exception for all failures.
///
/// A plain forward, which nothing throws through, needs no shape.

#include "tether/jnicalls.h"
#include "vrlbase/exceptions.h"

#include <jni.h>
#include <boost/numeric/conversion/cast.hpp>

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

namespace nativevrl {

constexpr const char* nvExceptionClass = "com/norvane/toolbox/loomkit/NVException";

/// Raises java.lang.OutOfMemoryError, taking no native memory for it. An exception that is pending stands before it.
void reportOutOfMemory(JNIEnv* env) noexcept;

/// The shape of most natives: a tether::Exception ends the body, and the Java exception that is pending is the report.
template <typename Result, typename Body>
Result guarded(JNIEnv* env, Result neutral, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const tether::Exception&) {
        return neutral;
    } catch (const std::bad_alloc&) {
        reportOutOfMemory(env);
        return neutral;
    }
}

/// The same for a native without a result.
template <typename Body>
void guarded(JNIEnv* env, Body&& body) {
    guarded(env, nullptr, [&] {
        std::forward<Body>(body)();
        return nullptr;
    });
}

/// Raises NVException with the prefix and the text of what the runtime threw.
void throwRuntimeFailure(JNIEnv* env, const char* prefix, const std::exception& failure);

/// The shape of the native that runs functions: a failure with a stack goes to `report`, the other becomes an
/// NVException with a message prefix.
template <typename Body, typename Report>
void evaluating(JNIEnv* env, const char* prefix, Body&& body, Report&& report) {
    guarded(env, [&] {
        try {
            std::forward<Body>(body)();
        } catch (const Norvane::vrl::vrlBaseException& failure) {
            std::forward<Report>(report)(failure);
        } catch (const Norvane::vrl::vrlInternalException& failure) {
            throwRuntimeFailure(env, prefix, failure);
        }
    });
}

/// The shape of natives that call the runtime: its two failures become an NVException with a message prefix.
template <typename Body>
void runtimeFacing(JNIEnv* env, const char* prefix, Body&& body) {
    evaluating(env, prefix, std::forward<Body>(body), [env, prefix](const Norvane::vrl::vrlBaseException& failure) {
        throwRuntimeFailure(env, prefix, failure);
    });
}

/// The same for a native with a result.
template <typename Result, typename Body>
Result runtimeFacing(JNIEnv* env, const char* prefix, Result neutral, Body&& body) {
    Result result = neutral;
    runtimeFacing(env, prefix, [&] { result = std::forward<Body>(body)(); });
    return result;
}

/// The shape of the native that reports nothing of its own: a Java exception that is pending stays, any other failure
/// is dropped.
template <typename Body>
void unreported(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const std::exception&) {
        return;
    }
}

/// Raises a Java exception with the text of a failure, or leaves the one that comes of the attempt.
void report(JNIEnv* env, const char* className, const std::exception& failure);

/// The shape of natives that read and write by subscript: overflow in casts and products is an index out of bounds,
/// any other native failure a RuntimeException.
template <typename Body>
void subscriptGuarded(JNIEnv* env, Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const tether::Exception&) {
        return;
    } catch (const boost::numeric::bad_numeric_cast& failure) {
        report(env, "java/lang/IndexOutOfBoundsException", failure);
    } catch (const std::overflow_error& failure) {
        report(env, "java/lang/IndexOutOfBoundsException", failure);
    } catch (const std::exception& failure) {
        report(env, "java/lang/RuntimeException", failure);
    }
}

/// The same for a native with a result.
template <typename Result, typename Body>
Result subscriptGuarded(JNIEnv* env, Result neutral, Body&& body) {
    Result result = neutral;
    subscriptGuarded(env, [&] { result = std::forward<Body>(body)(); });
    return result;
}

/// The shape of the native that computes a position, without a clause for casts of sizes.
template <typename Result, typename Body>
Result overflowGuarded(JNIEnv* env, Result neutral, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const tether::Exception&) {
        return neutral;
    } catch (const std::overflow_error& failure) {
        report(env, "java/lang/IndexOutOfBoundsException", failure);
    } catch (const std::exception& failure) {
        report(env, "java/lang/RuntimeException", failure);
    }
    return neutral;
}

/// Raises a Java exception of a class with a message and throws the tether marker that goes with it.
template <typename Marker = tether::Exception>
[[noreturn]] void raise(JNIEnv* env, const char* className, const char* message) {
    tether::throwNamedException(env, className, message);
    throw Marker();
}

}  // namespace nativevrl
