#pragma once

#include "proxies/jobjectproxy.h"

namespace nativevrl {

class JNativePtrClassProxy : public JSingletonClassProxy<JNativePtrClassProxy> {
public:
    JNativePtrClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/toolbox/loomkit/internal/NativePtr"; }

    const jmethodID constructor;
    const jmethodID get;
};

/// The Java object that holds a native address: of an array, or of a component instance.
class JNativePtrProxy : public JObjectProxy {
public:
    using ClassProxy = JNativePtrClassProxy;

    JNativePtrProxy(JNIEnv* env, jobject object);
    JNativePtrProxy(const JNativePtrProxy& other);
    JNativePtrProxy& operator=(const JNativePtrProxy& other) = default;
    ~JNativePtrProxy() override;

    /// The value that Java holds; a call on a null object is not guarded.
    jlong get() const;
    /// The same as an address.
    void* address() const;

protected:
    ClassProxy* nativePtrClass() const { return nativePtrClass_; }

private:
    JNativePtrClassProxy* nativePtrClass_;
};

/// A new NativePtr around an address, which may be null.
class NewJNativePtrProxy : public JNativePtrProxy {
public:
    NewJNativePtrProxy(JNIEnv* env, void* address);
    ~NewJNativePtrProxy() override;
};

/// Signatures with the NativePtr class: of a constructor from one, and of a method that gives one.
const char* nativePtrConstructorSignature();
const char* nativePtrGetterSignature();

}  // namespace nativevrl
