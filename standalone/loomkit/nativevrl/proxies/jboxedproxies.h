#pragma once

#include "proxies/jobjectproxy.h"
#include "proxies/jprimitive.h"

#include <cstddef>
#include <string>

namespace nativevrl {

class JNumberClassProxy : public JSingletonClassProxy<JNumberClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/Number"; }

    /// A Number, not null, as T, one of JNumberTypes. Java is called directly: an exception of the Number's own making
    /// is left pending, for the caller to look at.
    template <typename T>
    T read(JNIEnv* env, jobject number) const {
        return (env->*JPrimitive<T>::callMethod)(number, accessors_[JNumberTypes::indexOf<T>()]);
    }

private:
    template <typename T>
    jmethodID accessor() const {
        const char signature[] = {'(', ')', JPrimitive<T>::letter, '\0'};
        return method(JPrimitive<T>::numberMethod, signature);
    }

    template <typename... Types>
    struct Accessors {
        explicit Accessors(const JNumberClassProxy& cls) : ids{cls.accessor<Types>()...} {}
        jmethodID ids[sizeof...(Types)];
        jmethodID operator[](std::size_t index) const { return ids[index]; }
    };
    const JNumberTypes::In<Accessors> accessors_{*this};
};

/// Any java.lang.Number. The accessors leave an exception of a Number's own making pending, as the class proxy's do.
class JNumberProxy : public JProxyOf<JNumberClassProxy> {
public:
    using JProxyOf::JProxyOf;

    jbyte byteValue() const { return cls().read<jbyte>(env(), ref()); }
    jdouble doubleValue() const { return cls().read<jdouble>(env(), ref()); }
    jfloat floatValue() const { return cls().read<jfloat>(env(), ref()); }
    jint intValue() const { return cls().read<jint>(env(), ref()); }
    jlong longValue() const { return cls().read<jlong>(env(), ref()); }
    jshort shortValue() const { return cls().read<jshort>(env(), ref()); }
};

/// Wrapper class of a numeric type T: its parser, its text form, its constructor.
template <typename T>
class JBoxedNumberClassProxy : public JSingletonClassProxy<JBoxedNumberClassProxy<T>> {
    static std::string letter() { return {JPrimitive<T>::letter}; }

public:
    using JSingletonClassProxy<JBoxedNumberClassProxy<T>>::JSingletonClassProxy;
    static const char* className() { return JPrimitive<T>::boxedClass; }

    const jmethodID parse = this->staticMethod(JPrimitive<T>::parser, ("(Ljava/lang/String;)" + letter()).c_str());
    const jmethodID toString = this->staticMethod("toString", ("(" + letter() + ")Ljava/lang/String;").c_str());
    const jmethodID constructor = this->method("<init>", ("(" + letter() + ")V").c_str());
};

template <typename T>
using JBoxedNumberProxy = JProxyOf<JBoxedNumberClassProxy<T>, JNumberProxy>;

class JBooleanClassProxy : public JSingletonClassProxy<JBooleanClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/Boolean"; }

    const jmethodID toString = staticMethod("toString", "(Z)Ljava/lang/String;");
    const jmethodID valueOf = staticMethod("valueOf", "(Ljava/lang/String;)Ljava/lang/Boolean;");
    const jmethodID constructor = method("<init>", "(Z)V");
    const jmethodID booleanValue = method("booleanValue", "()Z");
};

class JBooleanProxy : public JProxyOf<JBooleanClassProxy> {
public:
    using JProxyOf::JProxyOf;

    jboolean booleanValue() const { return tether::callMethodA<jboolean>(env(), ref(), cls().booleanValue, nullptr); }
};

class JCharacterClassProxy : public JSingletonClassProxy<JCharacterClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/Character"; }

    const jmethodID toString = staticMethod("toString", "(C)Ljava/lang/String;");
    const jmethodID constructor = method("<init>", "(C)V");
    const jmethodID charValue = method("charValue", "()C");
};

class JCharacterProxy : public JProxyOf<JCharacterClassProxy> {
public:
    using JProxyOf::JProxyOf;

    /// Calls Java directly and leaves an exception pending, for the caller to look at.
    jchar charValue() const { return env()->CallCharMethod(ref(), cls().charValue); }
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
        this->construct(&argument);
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
    return adopt<JStringProxy>(env, callStaticObjectMethod(env, cls->classRef(), cls->toString, &argument));
}

}  // namespace nativevrl
