#pragma once

#include "proxies/jobjectproxy.h"

namespace nativevrl {

class JNVExceptionClassProxy : public JSingletonClassProxy<JNVExceptionClassProxy> {
public:
    JNVExceptionClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/toolbox/loomkit/NVException"; }

    const jmethodID constructor;
};

class JNVExceptionProxy : public JObjectProxy {
public:
    using ClassProxy = JNVExceptionClassProxy;

    JNVExceptionProxy(JNIEnv* env, jobject object);
    JNVExceptionProxy(const JNVExceptionProxy& other);
    JNVExceptionProxy& operator=(const JNVExceptionProxy& other) = default;
    ~JNVExceptionProxy() override;

protected:
    ClassProxy* exceptionClass() const { return exceptionClass_; }

private:
    JNVExceptionClassProxy* exceptionClass_;
};

/// A new exception with its message and the lines of the native stack; it is not thrown yet.
class NewJNVExceptionProxy : public JNVExceptionProxy {
public:
    NewJNVExceptionProxy(JNIEnv* env, jstring message, jobjectArray stack, jint stackLines);
    ~NewJNVExceptionProxy() override;
};

}  // namespace nativevrl
