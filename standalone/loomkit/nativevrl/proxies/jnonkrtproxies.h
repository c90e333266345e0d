#pragma once

#include "proxies/jarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"

/// The pure-Java cell and struct values, which hold no handle.
namespace nativevrl {

class JNonKRTCellClassProxy : public JSingletonClassProxy<JNonKRTCellClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/extern/java/NVCellArray"; }

    const jmethodID getDimensions = method("getDimensions", "()[I");
    const jmethodID numberOfElements = method("numberOfElements", "()I");
    const jmethodID numberOfDimensions = method("numberOfDimensions", "()I");
    const jmethodID get = method("get", "(I)Ljava/lang/Object;");
    const jmethodID getFlatArray = method("getFlatArray", "()[Ljava/lang/Object;");
};

class JNonKRTCellProxy : public JProxyOf<JNonKRTCellClassProxy> {
public:
    using JProxyOf::JProxyOf;

    JPrimitiveArrayProxy<jint> getDimensions() const { return call<JPrimitiveArrayProxy<jint>>(cls().getDimensions); }
    /// All values in the order of the native slots.
    JObjectArrayProxy<JObjectProxy> getFlatArray() const {
        return call<JObjectArrayProxy<JObjectProxy>>(cls().getFlatArray);
    }
};

class JNonKRTStructClassProxy : public JSingletonClassProxy<JNonKRTStructClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/extern/java/NVStructArray"; }

    const jmethodID fieldNames = method("fieldNames", "()[Ljava/lang/String;");
    const jmethodID getDimensions = method("getDimensions", "()[I");
    const jmethodID numberOfFields = method("numberOfFields", "()I");
    const jmethodID numberOfElements = method("numberOfElements", "()I");
    const jmethodID numberOfDimensions = method("numberOfDimensions", "()I");
    const jmethodID get = method("get", "(I)Ljava/lang/Object;");
    const jmethodID getFlatArray = method("getFlatArray", "()[Ljava/lang/Object;");
};

class JNonKRTStructProxy : public JProxyOf<JNonKRTStructClassProxy> {
public:
    using JProxyOf::JProxyOf;

    JObjectArrayProxy<JStringProxy> fieldNames() const {
        return call<JObjectArrayProxy<JStringProxy>>(cls().fieldNames);
    }
    JPrimitiveArrayProxy<jint> getDimensions() const { return call<JPrimitiveArrayProxy<jint>>(cls().getDimensions); }
    /// All values in the order of the native slots: the fields of one element next to one another.
    JObjectArrayProxy<JObjectProxy> getFlatArray() const {
        return call<JObjectArrayProxy<JObjectProxy>>(cls().getFlatArray);
    }
};

}  // namespace nativevrl
