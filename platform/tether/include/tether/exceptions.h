#pragma once

/// What the JNI wrapper throws. Each of these is a marker: a Java exception is pending on the thread, or the
/// failure was reported already. The text of what() is for native callers and never reaches Java from here.

#include <stdexcept>
#include <string>

namespace tether {

class Exception : public std::runtime_error {
public:
    Exception();
    explicit Exception(const std::string& what);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    ~Exception() override;
};

class NullPointerException : public Exception {
public:
    NullPointerException();
    ~NullPointerException() override;
};

class IllegalArgumentException : public Exception {
public:
    IllegalArgumentException();
    ~IllegalArgumentException() override;
};

class ArrayIndexOutOfBoundsException : public Exception {
public:
    ArrayIndexOutOfBoundsException();
    ~ArrayIndexOutOfBoundsException() override;
};

class FindClassException : public Exception {
public:
    explicit FindClassException(const std::string& className);
    ~FindClassException() override;
};

/// A thread is attached, yet the virtual machine gave no environment for it.
class GetEnvError : public Exception {
public:
    GetEnvError();
    ~GetEnvError() override;
};

class AttachCurrentThreadError : public Exception {
public:
    AttachCurrentThreadError();
    ~AttachCurrentThreadError() override;
};

class BadAllocError : public Exception {
public:
    explicit BadAllocError(const std::string& what);
    ~BadAllocError() override;
};

class OutOfMemoryException : public BadAllocError {
public:
    OutOfMemoryException();
    ~OutOfMemoryException() override;
};

class NewGlobalRefError : public BadAllocError {
public:
    NewGlobalRefError();
    ~NewGlobalRefError() override;
};

class NewWeakGlobalRefError : public Exception {
public:
    NewWeakGlobalRefError();
    ~NewWeakGlobalRefError() override;
};

class NewLocalRefError : public Exception {
public:
    NewLocalRefError();
    ~NewLocalRefError() override;
};

}  // namespace tether
