#pragma once

#include "proxies/jnativeptrproxy.h"
#include "qx/qx.h"

class krtInstance;

/// The Java classes that stand for native arrays, and the choice of the one that wraps a given array.
namespace nativevrl {

/// com.norvane.toolbox.loomkit.NVArray, the root of the wrappers.
class JNVArrayClassProxy : public JSingletonClassProxy<JNVArrayClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/NVArray"; }
};

class JNVArrayProxy : public JObjectProxy {
public:
    using ClassProxy = JNVArrayClassProxy;

    JNVArrayProxy(JNIEnv* env, jobject object);
    JNVArrayProxy(const JNVArrayProxy& other);
    JNVArrayProxy& operator=(const JNVArrayProxy& other) = default;
    ~JNVArrayProxy() override;

private:
    JNVArrayClassProxy* arrayClass_;
};

/// The wrapper that fits an array, which it takes over; a null array gives an NVBuiltinArray around 0. When it
/// throws the array is still the caller's.
class NewJNVArrayProxy : public JNVArrayProxy {
public:
    NewJNVArrayProxy(JNIEnv* env, qxArray* array);
    ~NewJNVArrayProxy() override;
};

/// com.norvane.toolbox.loomkit.NVBuiltinArray and what is below it: wrappers that hold a handle.
class JNVBuiltinArrayClassProxy : public JSingletonClassProxy<JNVBuiltinArrayClassProxy> {
public:
    JNVBuiltinArrayClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/toolbox/loomkit/NVBuiltinArray"; }

    const jmethodID constructor;
    const jmethodID getValue;
};

class JNVBuiltinArrayProxy : public JObjectProxy {
public:
    using ClassProxy = JNVBuiltinArrayClassProxy;

    JNVBuiltinArrayProxy(JNIEnv* env, jobject object);
    JNVBuiltinArrayProxy(const JNVBuiltinArrayProxy& other);
    JNVBuiltinArrayProxy& operator=(const JNVBuiltinArrayProxy& other) = default;
    ~JNVBuiltinArrayProxy() override;

    /// The array behind the wrapper, which keeps it.
    qxArray* getArray() const;

protected:
    ClassProxy* builtinClass() const { return builtinClass_; }

private:
    JNVBuiltinArrayClassProxy* builtinClass_;
};

class NewJNVBuiltinArrayProxy : public JNVBuiltinArrayProxy {
public:
    /// A wrapper around `array`: an NVBuiltinArray, or, with `specificClass`, the class that fits the array's own.
    /// A function handle or an opaque value then raises java.lang.RuntimeException.
    NewJNVBuiltinArrayProxy(JNIEnv* env, qxArray* array, bool specificClass);
    ~NewJNVBuiltinArrayProxy() override;
};

class JNVFunctionHandleClassProxy : public JSingletonClassProxy<JNVFunctionHandleClassProxy> {
public:
    JNVFunctionHandleClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/toolbox/loomkit/NVFunctionHandle"; }

    const jmethodID constructor;
};

class JNVFunctionHandleProxy : public JObjectProxy {
public:
    using ClassProxy = JNVFunctionHandleClassProxy;

    JNVFunctionHandleProxy(JNIEnv* env, jobject object);
    JNVFunctionHandleProxy(const JNVFunctionHandleProxy& other);
    JNVFunctionHandleProxy& operator=(const JNVFunctionHandleProxy& other) = default;
    ~JNVFunctionHandleProxy() override;

protected:
    ClassProxy* functionHandleClass() const { return functionHandleClass_; }

private:
    JNVFunctionHandleClassProxy* functionHandleClass_;
};

class NewJNVFunctionHandleProxy : public JNVFunctionHandleProxy {
public:
    NewJNVFunctionHandleProxy(JNIEnv* env, qxArray* array);
    ~NewJNVFunctionHandleProxy() override;
};

}  // namespace nativevrl
