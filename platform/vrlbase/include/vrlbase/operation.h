#pragma once

#include <exception>
#include <utility>

namespace vrlbase {

/// Called while an exception is handled: throws it on as one of the runtime's own. Those stay as they are, memory that
/// ran out is vrlBaseException::outOfMemory, anything else a vrlInternalException with its text.
[[noreturn]] void throwAsRuntimeFailure();

/// The shape of the runtime's operations, whose contract names vrlBaseException and vrlInternalException: no other
/// std::exception leaves the body, and none is in want of memory itself.
template <typename Body>
decltype(auto) operation(Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception&) {
        throwAsRuntimeFailure();
    }
}

}  // namespace vrlbase
