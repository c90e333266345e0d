#pragma once

#include "proxies/jobjectproxy.h"

namespace nativevrl {

class JNativePtrClassProxy : public JSingletonClassProxy<JNativePtrClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/internal/NativePtr"; }

    const jmethodID constructor = method("<init>", "(J)V");
    const jmethodID get = method("get", "()J");
};

/// The Java object that holds a native address: of an array, or of a component instance.
class JNativePtrProxy : public JProxyOf<JNativePtrClassProxy> {
public:
    using JProxyOf::JProxyOf;

    /// The value that Java holds; a call on a null object is not guarded.
    jlong get() const;
    /// The same as an address.
    void* address() const;
};

/// A new NativePtr around an address, which may be null.
class NewJNativePtrProxy : public JNativePtrProxy {
public:
    NewJNativePtrProxy(JNIEnv* env, void* address);
};

/// Signatures with the NativePtr class: of a constructor from one, and of a method that gives one.
const char* nativePtrConstructorSignature();
const char* nativePtrGetterSignature();

}  // namespace nativevrl
