#include "proxies/jboxedproxies.h"

namespace nativevrl {

namespace {

std::string signatureOf(const std::string& parameters, const std::string& result) {
    return "(" + parameters + ")" + result;
}

constexpr const char* stringType = "Ljava/lang/String;";

template <typename T>
std::string letterOf() {
    return {JPrimitive<T>::letter};
}

}  // namespace

JNumberClassProxy::JNumberClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      byteValue(method("byteValue", "()B")),
      doubleValue(method("doubleValue", "()D")),
      floatValue(method("floatValue", "()F")),
      intValue(method("intValue", "()I")),
      longValue(method("longValue", "()J")),
      shortValue(method("shortValue", "()S")) {}

JNumberProxy::JNumberProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), numberClass_(JNumberClassProxy::instance(env)) {}
JNumberProxy::JNumberProxy(const JNumberProxy& other) = default;
JNumberProxy::~JNumberProxy() = default;

jbyte JNumberProxy::byteValue() const { return env()->CallByteMethod(ref(), numberClass_->byteValue); }

jdouble JNumberProxy::doubleValue() const { return env()->CallDoubleMethod(ref(), numberClass_->doubleValue); }

jfloat JNumberProxy::floatValue() const { return env()->CallFloatMethod(ref(), numberClass_->floatValue); }

jint JNumberProxy::intValue() const { return env()->CallIntMethod(ref(), numberClass_->intValue); }

jlong JNumberProxy::longValue() const { return env()->CallLongMethod(ref(), numberClass_->longValue); }

jshort JNumberProxy::shortValue() const { return env()->CallShortMethod(ref(), numberClass_->shortValue); }

template <typename T>
JBoxedNumberClassProxy<T>::JBoxedNumberClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy<JBoxedNumberClassProxy<T>>(env, cls),
      parse(this->staticMethod(JPrimitive<T>::parser, signatureOf(stringType, letterOf<T>()).c_str())),
      toString(this->staticMethod("toString", signatureOf(letterOf<T>(), stringType).c_str())),
      constructor(this->method("<init>", signatureOf(letterOf<T>(), "V").c_str())) {}

template class JBoxedNumberClassProxy<jbyte>;
template class JBoxedNumberClassProxy<jdouble>;
template class JBoxedNumberClassProxy<jfloat>;
template class JBoxedNumberClassProxy<jint>;
template class JBoxedNumberClassProxy<jlong>;
template class JBoxedNumberClassProxy<jshort>;

JBooleanClassProxy::JBooleanClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      toString(staticMethod("toString", "(Z)Ljava/lang/String;")),
      valueOf(staticMethod("valueOf", "(Ljava/lang/String;)Ljava/lang/Boolean;")),
      constructor(method("<init>", "(Z)V")),
      booleanValue(method("booleanValue", "()Z")) {}

JBooleanProxy::JBooleanProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), booleanClass_(JBooleanClassProxy::instance(env)) {}
JBooleanProxy::JBooleanProxy(const JBooleanProxy& other) = default;
JBooleanProxy::~JBooleanProxy() = default;

jboolean JBooleanProxy::booleanValue() const {
    return tether::callMethodA<jboolean>(env(), ref(), booleanClass_->booleanValue, nullptr);
}

JCharacterClassProxy::JCharacterClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      toString(staticMethod("toString", "(C)Ljava/lang/String;")),
      constructor(method("<init>", "(C)V")),
      charValue(method("charValue", "()C")) {}

JCharacterProxy::JCharacterProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), characterClass_(JCharacterClassProxy::instance(env)) {}
JCharacterProxy::JCharacterProxy(const JCharacterProxy& other) = default;
JCharacterProxy::~JCharacterProxy() = default;

jchar JCharacterProxy::charValue() const { return env()->CallCharMethod(ref(), characterClass_->charValue); }

}  // namespace nativevrl
