#pragma once

#include "proxies/jarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"

/// The pure-Java cell and struct values, which hold no handle.
namespace nativevrl {

class JNonKRTCellClassProxy : public JSingletonClassProxy<JNonKRTCellClassProxy> {
public:
    JNonKRTCellClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/extern/java/NVCellArray"; }

    const jmethodID getDimensions;
    const jmethodID numberOfElements;
    const jmethodID numberOfDimensions;
    const jmethodID get;
    const jmethodID getFlatArray;
};

class JNonKRTCellProxy : public JObjectProxy {
public:
    using ClassProxy = JNonKRTCellClassProxy;

    JNonKRTCellProxy(JNIEnv* env, jobject object);
    JNonKRTCellProxy(const JNonKRTCellProxy& other);
    JNonKRTCellProxy& operator=(const JNonKRTCellProxy& other) = default;
    ~JNonKRTCellProxy() override;

    JPrimitiveArrayProxy<jint> getDimensions() const;
    /// All values in the order of the native slots.
    JObjectArrayProxy<JObjectProxy> getFlatArray() const;

private:
    JNonKRTCellClassProxy* cellClass_;
};

class JNonKRTStructClassProxy : public JSingletonClassProxy<JNonKRTStructClassProxy> {
public:
    JNonKRTStructClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "com/norvane/extern/java/NVStructArray"; }

    const jmethodID fieldNames;
    const jmethodID getDimensions;
    const jmethodID numberOfFields;
    const jmethodID numberOfElements;
    const jmethodID numberOfDimensions;
    const jmethodID get;
    const jmethodID getFlatArray;
};

class JNonKRTStructProxy : public JObjectProxy {
public:
    using ClassProxy = JNonKRTStructClassProxy;

    JNonKRTStructProxy(JNIEnv* env, jobject object);
    JNonKRTStructProxy(const JNonKRTStructProxy& other);
    JNonKRTStructProxy& operator=(const JNonKRTStructProxy& other) = default;
    ~JNonKRTStructProxy() override;

    JObjectArrayProxy<JStringProxy> fieldNames() const;
    JPrimitiveArrayProxy<jint> getDimensions() const;
    /// All values in the order of the native slots: the fields of one element next to one another.
    JObjectArrayProxy<JObjectProxy> getFlatArray() const;

private:
    JNonKRTStructClassProxy* structClass_;
};

}  // namespace nativevrl
