#include "tether/exceptions.h"

namespace tether {

Exception::Exception() : std::runtime_error("a Java exception is pending") {}
Exception::Exception(const std::string& what) : std::runtime_error(what) {}
Exception::~Exception() = default;

FindClassException::FindClassException(const std::string& className) : Exception("class not found: " + className) {}
FindClassException::~FindClassException() = default;

BadAllocError::BadAllocError(const std::string& what) : Exception(what) {}
BadAllocError::~BadAllocError() = default;

NullPointerException::NullPointerException() : Exception("null reference") {}
NullPointerException::~NullPointerException() = default;

IllegalArgumentException::IllegalArgumentException() : Exception("illegal argument") {}
IllegalArgumentException::~IllegalArgumentException() = default;

ArrayIndexOutOfBoundsException::ArrayIndexOutOfBoundsException() : Exception("index out of bounds") {}
ArrayIndexOutOfBoundsException::~ArrayIndexOutOfBoundsException() = default;

GetEnvError::GetEnvError() : Exception("the virtual machine gave no environment for this thread") {}
GetEnvError::~GetEnvError() = default;

AttachCurrentThreadError::AttachCurrentThreadError()
    : Exception("the thread could not be attached to the virtual machine") {}
AttachCurrentThreadError::~AttachCurrentThreadError() = default;

OutOfMemoryException::OutOfMemoryException() : BadAllocError("out of memory") {}
OutOfMemoryException::~OutOfMemoryException() = default;

NewGlobalRefError::NewGlobalRefError() : BadAllocError("no global reference could be made") {}
NewGlobalRefError::~NewGlobalRefError() = default;

NewWeakGlobalRefError::NewWeakGlobalRefError() : Exception("no weak global reference could be made") {}
NewWeakGlobalRefError::~NewWeakGlobalRefError() = default;

NewLocalRefError::NewLocalRefError() : Exception("no local reference could be made") {}
NewLocalRefError::~NewLocalRefError() = default;

}  // namespace tether
