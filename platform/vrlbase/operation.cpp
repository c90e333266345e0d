#include "vrlbase/operation.h"

#include "vrlbase/exceptions.h"

#include <new>

namespace vrlbase {

namespace {

using Norvane::vrl::vrlBaseException;
using Norvane::vrl::vrlInternalException;

[[noreturn]] void throwUnforeseen(const std::exception& failure) {
    try {
        throw vrlInternalException(failure.what());
    } catch (const std::bad_alloc&) {
        throw vrlBaseException::outOfMemory();
    }
}

}  // namespace

void throwAsRuntimeFailure() {
    try {
        throw;
    } catch (const vrlBaseException&) {
        throw;
    } catch (const vrlInternalException&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw vrlBaseException::outOfMemory();
    } catch (const std::exception& failure) {
        throwUnforeseen(failure);
    }
}

}  // namespace vrlbase
