#pragma once

#include "proxies/jclassproxy.h"
#include "proxies/jproxyof.h"
#include "proxies/jstringproxy.h"

namespace nativevrl {

class JObjectClassProxy : public JSingletonClassProxy<JObjectClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/Object"; }

    const jmethodID toString = method("toString", "()Ljava/lang/String;");
    const jmethodID getClass = method("getClass", "()Ljava/lang/Class;");
};

class JClassClassProxy : public JSingletonClassProxy<JClassClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/Class"; }

    const jmethodID getName = method("getName", "()Ljava/lang/String;");
};

/// Calls an object method of an object, or a static one of a class. The result is a local reference of the caller.
/// Throws tether::Exception when Java throws.
jobject callObjectMethod(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments = nullptr);
jobject callStaticObjectMethod(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments = nullptr);

/// Any Java object. The object-to-primitive reads take a Number, a String, a Boolean or a Character, in this order;
/// any other object gives 0. A null must be tested for first. They throw tether::Exception when Java throws, and
/// JNumberFormatException for a text that is no number.
class JObjectProxy : public JProxyOf<JObjectClassProxy, JObjectRef> {
public:
    using JProxyOf::JProxyOf;

    /// Name of the object's class as Class.getName gives it; "null" for null.
    JStringProxy getClassName() const;
    /// Text of the object's toString.
    JStringProxy toString() const;

    template <typename Class>
    bool isInstanceOf() const {
        return Class::instance(env())->isInstance(env(), ref());
    }

    /// The read named after T, one of the eight primitive types.
    template <typename T>
    T as() const;

    jboolean asBoolean() const { return as<jboolean>(); }
    jchar asChar() const { return as<jchar>(); }
    jbyte asByte() const { return as<jbyte>(); }
    jshort asShort() const { return as<jshort>(); }
    jint asInt() const { return as<jint>(); }
    jlong asLong() const { return as<jlong>(); }
    jfloat asFloat() const { return as<jfloat>(); }
    jdouble asDouble() const { return as<jdouble>(); }

protected:
    /// What a method without arguments gives, as a proxy of class Result.
    template <typename Result = JObjectProxy>
    Result call(jmethodID method) const {
        return adopt<Result>(env(), callObjectMethod(env(), ref(), method));
    }
};

/// A class for the length of one operation. The local reference that the look-up gave is not deleted: it stays
/// until the native method returns, beside the one owned here.
class JClassRef : public JObjectRef {
public:
    JClassRef(JNIEnv* env, const char* name);

    jclass get() const noexcept { return static_cast<jclass>(ref()); }
};

}  // namespace nativevrl
