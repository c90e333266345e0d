#pragma once

#include "proxies/jobjectproxy.h"
#include "qx/qx.h"
#include "tether/globalref.h"

class krtInstance;

namespace nativevrl {

class JNVJavaObjectRefClassProxy : public JSingletonClassProxy<JNVJavaObjectRefClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/NVJavaObjectRef"; }

    const jmethodID constructor = method("<init>", "(Ljava/lang/Object;)V");
    const jmethodID get = method("get", "()Ljava/lang/Object;");
};

/// The Java wrapper of a plain Java object on its way through native code.
class JNVJavaObjectRefProxy : public JProxyOf<JNVJavaObjectRefClassProxy> {
public:
    using JProxyOf::JProxyOf;

    /// The object that it refers to.
    JObjectProxy get() const { return call(cls().get); }
};

/// A new wrapper around the Java object in an array. The array is consumed: it is destroyed once the wrapper is
/// made. An array without an object gives a proxy of null, and goes all the same. When it throws the array is still the
/// caller's.
class NewJNVJavaObjectRefProxy : public JNVJavaObjectRefProxy {
public:
    NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array);
    NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array, krtInstance* instance);

private:
    void wrapAndConsume(qxArray* array, tether::GlobalRef<jobject> object);
};

}  // namespace nativevrl
