#pragma once

#include "proxies/jobjectproxy.h"
#include "proxies/jprimitive.h"

#include <string>

namespace nativevrl {

class JNumberClassProxy : public JSingletonClassProxy<JNumberClassProxy> {
public:
    JNumberClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/lang/Number"; }

    const jmethodID byteValue;
    const jmethodID doubleValue;
    const jmethodID floatValue;
    const jmethodID intValue;
    const jmethodID longValue;
    const jmethodID shortValue;
};

/// Any java.lang.Number. The accessors call Java directly and leave an exception of a Number's own making
/// pending, for the caller to look at.
class JNumberProxy : public JObjectProxy {
public:
    using ClassProxy = JNumberClassProxy;

    JNumberProxy(JNIEnv* env, jobject object);
    JNumberProxy(const JNumberProxy& other);
    JNumberProxy& operator=(const JNumberProxy& other) = default;
    ~JNumberProxy() override;

    jbyte byteValue() const;
    jdouble doubleValue() const;
    jfloat floatValue() const;
    jint intValue() const;
    jlong longValue() const;
    jshort shortValue() const;

private:
    JNumberClassProxy* numberClass_;
};

/// Wrapper class of a numeric type T: its parser, its text form, its constructor.
template <typename T>
class JBoxedNumberClassProxy : public JSingletonClassProxy<JBoxedNumberClassProxy<T>> {
public:
    JBoxedNumberClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return JPrimitive<T>::boxedClass; }

    const jmethodID parse;
    const jmethodID toString;
    const jmethodID constructor;
};

template <typename T>
class JBoxedNumberProxy : public JNumberProxy {
public:
    using ClassProxy = JBoxedNumberClassProxy<T>;

    JBoxedNumberProxy(JNIEnv* env, jobject object)
        : JNumberProxy(env, object), boxedClass_(ClassProxy::instance(env)) {}

protected:
    ClassProxy* boxedClass() const { return boxedClass_; }

private:
    ClassProxy* boxedClass_;
};

class JBooleanClassProxy : public JSingletonClassProxy<JBooleanClassProxy> {
public:
    JBooleanClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/lang/Boolean"; }

    const jmethodID toString;
    const jmethodID valueOf;
    const jmethodID constructor;
    const jmethodID booleanValue;
};

class JBooleanProxy : public JObjectProxy {
public:
    using ClassProxy = JBooleanClassProxy;

    JBooleanProxy(JNIEnv* env, jobject object);
    JBooleanProxy(const JBooleanProxy& other);
    JBooleanProxy& operator=(const JBooleanProxy& other) = default;
    ~JBooleanProxy() override;

    jboolean booleanValue() const;

protected:
    ClassProxy* boxedClass() const { return booleanClass_; }

private:
    JBooleanClassProxy* booleanClass_;
};

class JCharacterClassProxy : public JSingletonClassProxy<JCharacterClassProxy> {
public:
    JCharacterClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/lang/Character"; }

    const jmethodID toString;
    const jmethodID constructor;
    const jmethodID charValue;
};

class JCharacterProxy : public JObjectProxy {
public:
    using ClassProxy = JCharacterClassProxy;

    JCharacterProxy(JNIEnv* env, jobject object);
    JCharacterProxy(const JCharacterProxy& other);
    JCharacterProxy& operator=(const JCharacterProxy& other) = default;
    ~JCharacterProxy() override;

    /// Calls Java directly and leaves an exception pending, for the caller to look at.
    jchar charValue() const;

protected:
    ClassProxy* boxedClass() const { return characterClass_; }

private:
    JCharacterClassProxy* characterClass_;
};

/// The proxy of T's wrapper class.
template <typename T>
struct BoxedProxy {
    using Type = JBoxedNumberProxy<T>;
};
template <>
struct BoxedProxy<jboolean> {
    using Type = JBooleanProxy;
};
template <>
struct BoxedProxy<jchar> {
    using Type = JCharacterProxy;
};

/// A new wrapper object around a value of type T, made with the wrapper's constructor.
template <typename T>
class NewJBoxedProxy : public BoxedProxy<T>::Type {
    using Base = typename BoxedProxy<T>::Type;

public:
    NewJBoxedProxy(JNIEnv* env, T value) : Base(env, nullptr) {
        const jvalue argument = asArgument(value);
        this->attach(
            tether::newObjectA(env, this->boxedClass()->classRef(), this->boxedClass()->constructor, &argument));
    }
};

using JByteClassProxy = JBoxedNumberClassProxy<jbyte>;
using JDoubleClassProxy = JBoxedNumberClassProxy<jdouble>;
using JFloatClassProxy = JBoxedNumberClassProxy<jfloat>;
using JIntegerClassProxy = JBoxedNumberClassProxy<jint>;
using JLongClassProxy = JBoxedNumberClassProxy<jlong>;
using JShortClassProxy = JBoxedNumberClassProxy<jshort>;

using JByteProxy = JBoxedNumberProxy<jbyte>;
using JDoubleProxy = JBoxedNumberProxy<jdouble>;
using JFloatProxy = JBoxedNumberProxy<jfloat>;
using JIntegerProxy = JBoxedNumberProxy<jint>;
using JLongProxy = JBoxedNumberProxy<jlong>;
using JShortProxy = JBoxedNumberProxy<jshort>;

using NewJBooleanProxy = NewJBoxedProxy<jboolean>;
using NewJByteProxy = NewJBoxedProxy<jbyte>;
using NewJCharacterProxy = NewJBoxedProxy<jchar>;
using NewJDoubleProxy = NewJBoxedProxy<jdouble>;
using NewJFloatProxy = NewJBoxedProxy<jfloat>;
using NewJIntegerProxy = NewJBoxedProxy<jint>;
using NewJLongProxy = NewJBoxedProxy<jlong>;
using NewJShortProxy = NewJBoxedProxy<jshort>;

/// The Java text of a value, as the static toString of its wrapper class gives it.
template <typename T>
JStringProxy textOf(JNIEnv* env, T value) {
    auto* cls = BoxedProxy<T>::Type::ClassProxy::instance(env);
    const jvalue argument = asArgument(value);
    JStringProxy text(env, nullptr);
    text.attach(env->CallStaticObjectMethodA(cls->classRef(), cls->toString, &argument));
    tether::throwIfPending(env);
    return text;
}

extern template class JBoxedNumberClassProxy<jbyte>;
extern template class JBoxedNumberClassProxy<jdouble>;
extern template class JBoxedNumberClassProxy<jfloat>;
extern template class JBoxedNumberClassProxy<jint>;
extern template class JBoxedNumberClassProxy<jlong>;
extern template class JBoxedNumberClassProxy<jshort>;

}  // namespace nativevrl
