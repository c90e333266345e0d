#include "tether/exceptions.h"

#include <new>

namespace tether {

namespace {

// Made when the library is loaded: the markers that are thrown later share their texts and take no memory, which may be
// what has run out.
const Exception pendingMarker("a Java exception is pending");
const Exception classMarker("class not found");
const Exception nullMarker("null reference");
const Exception argumentMarker("illegal argument");
const Exception indexMarker("index out of bounds");
const Exception environmentMarker("the virtual machine gave no environment for this thread");
const Exception attachmentMarker("the thread could not be attached to the virtual machine");
const BadAllocError memoryMarker("out of memory");
const BadAllocError globalMarker("no global reference could be made");
const Exception weakMarker("no weak global reference could be made");
const Exception localMarker("no local reference could be made");

Exception classNotFound(const std::string& className) try {
    return Exception(classMarker.what() + (": " + className));
} catch (const std::bad_alloc&) {
    return classMarker;
}

}  // namespace

Exception::Exception() : Exception(pendingMarker) {}
Exception::Exception(const std::string& what) : std::runtime_error(what) {}
Exception::~Exception() = default;

FindClassException::FindClassException(const std::string& className) : Exception(classNotFound(className)) {}
FindClassException::~FindClassException() = default;

BadAllocError::BadAllocError(const std::string& what) : Exception(what) {}
BadAllocError::~BadAllocError() = default;

NullPointerException::NullPointerException() : Exception(nullMarker) {}
NullPointerException::~NullPointerException() = default;

IllegalArgumentException::IllegalArgumentException() : Exception(argumentMarker) {}
IllegalArgumentException::~IllegalArgumentException() = default;

ArrayIndexOutOfBoundsException::ArrayIndexOutOfBoundsException() : Exception(indexMarker) {}
ArrayIndexOutOfBoundsException::~ArrayIndexOutOfBoundsException() = default;

GetEnvError::GetEnvError() : Exception(environmentMarker) {}
GetEnvError::~GetEnvError() = default;

AttachCurrentThreadError::AttachCurrentThreadError() : Exception(attachmentMarker) {}
AttachCurrentThreadError::~AttachCurrentThreadError() = default;

OutOfMemoryException::OutOfMemoryException() : BadAllocError(memoryMarker) {}
OutOfMemoryException::~OutOfMemoryException() = default;

NewGlobalRefError::NewGlobalRefError() : BadAllocError(globalMarker) {}
NewGlobalRefError::~NewGlobalRefError() = default;

NewWeakGlobalRefError::NewWeakGlobalRefError() : Exception(weakMarker) {}
NewWeakGlobalRefError::~NewWeakGlobalRefError() = default;

NewLocalRefError::NewLocalRefError() : Exception(localMarker) {}
NewLocalRefError::~NewLocalRefError() = default;

}  // namespace tether
