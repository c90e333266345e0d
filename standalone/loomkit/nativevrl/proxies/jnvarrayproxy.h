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

using JNVArrayProxy = JProxyOf<JNVArrayClassProxy>;

/// The wrapper that fits an array, which it takes over; a null array gives an NVBuiltinArray around 0. When it
/// throws the array is still the caller's.
class NewJNVArrayProxy : public JNVArrayProxy {
public:
    NewJNVArrayProxy(JNIEnv* env, qxArray* array);
};

/// com.norvane.toolbox.loomkit.NVBuiltinArray and what is below it: wrappers that hold a handle.
class JNVBuiltinArrayClassProxy : public JSingletonClassProxy<JNVBuiltinArrayClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/NVBuiltinArray"; }

    const jmethodID constructor = method("<init>", nativePtrConstructorSignature());
    const jmethodID getValue = method("getValue", nativePtrGetterSignature());
};

class JNVBuiltinArrayProxy : public JProxyOf<JNVBuiltinArrayClassProxy> {
public:
    using JProxyOf::JProxyOf;

    /// The array behind the wrapper, which keeps it.
    qxArray* getArray() const;
};

class NewJNVBuiltinArrayProxy : public JNVBuiltinArrayProxy {
public:
    /// A wrapper around `array`: an NVBuiltinArray, or, with `specificClass`, the class that fits the array's own.
    /// A function handle or an opaque value then raises java.lang.RuntimeException.
    NewJNVBuiltinArrayProxy(JNIEnv* env, qxArray* array, bool specificClass);
};

class JNVFunctionHandleClassProxy : public JSingletonClassProxy<JNVFunctionHandleClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/NVFunctionHandle"; }

    const jmethodID constructor = method("<init>", nativePtrConstructorSignature());
};

using JNVFunctionHandleProxy = JProxyOf<JNVFunctionHandleClassProxy>;

class NewJNVFunctionHandleProxy : public JNVFunctionHandleProxy {
public:
    NewJNVFunctionHandleProxy(JNIEnv* env, qxArray* array);
};

}  // namespace nativevrl
