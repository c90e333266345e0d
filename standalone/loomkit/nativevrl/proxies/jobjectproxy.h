#pragma once

#include "proxies/jclassproxy.h"
#include "proxies/jstringproxy.h"

namespace nativevrl {

class JObjectClassProxy : public JSingletonClassProxy<JObjectClassProxy> {
public:
    JObjectClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/lang/Object"; }

    const jmethodID toString;
    const jmethodID getClass;
};

class JClassClassProxy : public JSingletonClassProxy<JClassClassProxy> {
public:
    JClassClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/lang/Class"; }

    const jmethodID getName;
};

/// Any Java object. The object-to-primitive reads take a Number, a String, a Boolean or a Character, in this order;
/// any other object gives 0. A null must be tested for first. They throw tether::Exception when Java throws, and
/// JNumberFormatException for a text that is no number.
class JObjectProxy : public JObjectRef {
public:
    using ClassProxy = JObjectClassProxy;

    JObjectProxy(JNIEnv* env, jobject object);
    JObjectProxy(const JObjectProxy& other);
    JObjectProxy& operator=(const JObjectProxy& other) = default;
    ~JObjectProxy() override;

    /// Name of the object's class as Class.getName gives it; "null" for null.
    JStringProxy getClassName() const;
    /// Text of the object's toString.
    JStringProxy toString() const;

    template <typename Class>
    bool isInstanceOf() const {
        return Class::instance(env())->isInstance(env(), ref());
    }

    jboolean asBoolean() const;
    jchar asChar() const;
    jbyte asByte() const;
    jshort asShort() const;
    jint asInt() const;
    jlong asLong() const;
    jfloat asFloat() const;
    jdouble asDouble() const;

    /// The read named after T.
    template <typename T>
    T as() const;

protected:
    /// Calls a method without arguments that gives an object; the result is the caller's.
    jobject callObject(jmethodID method) const;

private:
    JObjectClassProxy* objectClass_;
};

/// Calls a method without arguments of any object; the result is a local reference of the caller.
jobject callObjectMethod(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments = nullptr);

/// A class for the length of one operation. The local reference that the look-up gave is not deleted: it stays
/// until the native method returns, beside the one owned here.
class JClassRef : public JObjectRef {
public:
    JClassRef(JNIEnv* env, const char* name);
    JClassRef(const JClassRef& other);
    ~JClassRef() override;

    jclass get() const noexcept { return static_cast<jclass>(ref()); }
};

template <>
inline jboolean JObjectProxy::as<jboolean>() const {
    return asBoolean();
}
template <>
inline jchar JObjectProxy::as<jchar>() const {
    return asChar();
}
template <>
inline jbyte JObjectProxy::as<jbyte>() const {
    return asByte();
}
template <>
inline jshort JObjectProxy::as<jshort>() const {
    return asShort();
}
template <>
inline jint JObjectProxy::as<jint>() const {
    return asInt();
}
template <>
inline jlong JObjectProxy::as<jlong>() const {
    return asLong();
}
template <>
inline jfloat JObjectProxy::as<jfloat>() const {
    return asFloat();
}
template <>
inline jdouble JObjectProxy::as<jdouble>() const {
    return asDouble();
}

}  // namespace nativevrl
