#pragma once

#include "proxies/jobjectproxy.h"
#include "qx/qx.h"

class krtInstance;

namespace nativevrl {

class JNVJavaObjectRefClassProxy : public JSingletonClassProxy<JNVJavaObjectRefClassProxy> {
public:
    JNVJavaObjectRefClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/toolbox/loomkit/NVJavaObjectRef"; }

    const jmethodID constructor;
    const jmethodID get;
};

/// The Java wrapper of a plain Java object on its way through native code.
class JNVJavaObjectRefProxy : public JObjectProxy {
public:
    using ClassProxy = JNVJavaObjectRefClassProxy;

    JNVJavaObjectRefProxy(JNIEnv* env, jobject object);
    JNVJavaObjectRefProxy(const JNVJavaObjectRefProxy& other);
    JNVJavaObjectRefProxy& operator=(const JNVJavaObjectRefProxy& other) = default;
    ~JNVJavaObjectRefProxy() override;

    /// The object that it refers to.
    JObjectProxy get() const;

protected:
    ClassProxy* javaObjectRefClass() const { return javaObjectRefClass_; }

private:
    JNVJavaObjectRefClassProxy* javaObjectRefClass_;
};

/// A new wrapper around the Java object in an array. The array is consumed: it is destroyed once the wrapper is
/// made. An array without an object gives a proxy of null, and goes all the same. When it throws the array is still the
/// caller's.
class NewJNVJavaObjectRefProxy : public JNVJavaObjectRefProxy {
public:
    NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array);
    NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array, krtInstance* instance);
    ~NewJNVJavaObjectRefProxy() override;

private:
    /// `object` is a global reference, deleted here.
    void wrapAndConsume(qxArray* array, jobject object);
};

}  // namespace nativevrl
