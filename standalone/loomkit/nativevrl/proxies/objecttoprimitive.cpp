/// How an element of an object array becomes a primitive: the reads of JObjectProxy and the parser chain behind
/// those of strings.

#include "proxies/jboxedproxies.h"
#include "proxies/jnumberformatexception.h"
#include "proxies/numericcast.h"

#include <type_traits>

namespace nativevrl {

namespace {

class JNumberFormatExceptionClassProxy : public JSingletonClassProxy<JNumberFormatExceptionClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/NumberFormatException"; }
};

template <typename T>
T parseWith(JNIEnv* env, jobject text) {
    auto* cls = JBoxedNumberClassProxy<T>::instance(env);
    const jvalue argument = objectArgument(text);
    return tether::callStaticMethodA<T>(env, cls->classRef(), cls->parse, &argument);
}

/// Takes the pending exception when it says that a text is no number: then none is pending any more. Null when it says
/// anything else, and stays.
JObjectRef takeRefusal(JNIEnv* env, const JNumberFormatExceptionClassProxy& refusalClass) {
    auto pending = adopt(env, env->ExceptionOccurred());
    // No test can be made while an exception is pending, so it steps aside.
    env->ExceptionClear();
    if (!pending.isNull() && !refusalClass.isInstance(env, pending.ref())) {
        env->Throw(static_cast<jthrowable>(pending.ref()));
        pending.reset();
    }
    return pending;
}

/// Runs `parser`; a text that it refuses goes on to `next` with the refusal, which is not pending any more. Any other
/// failure stands.
template <typename Parser, typename Next>
auto parseOr(JNIEnv* env, Parser&& parser, Next&& next) -> decltype(parser()) {
    // Before the parser, since a class can't be looked up while an exception is pending.
    const auto& refusalClass = *JNumberFormatExceptionClassProxy::instance(env);
    JObjectRef refusal(env, nullptr);
    try {
        return parser();
    } catch (const tether::Exception&) {
        refusal = takeRefusal(env, refusalClass);
        if (refusal.isNull()) {
            throw;
        }
    }
    return next(refusal);
}

/// The text by the parser of T, else as a double, else as a long, the latter two cast to T.
template <typename T>
T parseAs(JNIEnv* env, jobject text) {
    const auto refuse = [env](const JObjectRef& refusal) -> T {
        env->Throw(static_cast<jthrowable>(refusal.ref()));
        throw JNumberFormatException();
    };
    const auto asLong = [&](const JObjectRef&) {
        return parseOr(
            env, [&] { return castElement<T>(parseWith<jlong>(env, text)); }, refuse);
    };
    const auto asDouble = [&](const JObjectRef&) {
        return parseOr(
            env, [&] { return castElement<T>(parseWith<jdouble>(env, text)); }, asLong);
    };
    return parseOr(
        env, [&] { return parseWith<T>(env, text); }, asDouble);
}

jboolean parseBoolean(JNIEnv* env, jobject text) {
    auto* cls = JBooleanClassProxy::instance(env);
    const jvalue argument = objectArgument(text);
    return adopt<JBooleanProxy>(env, callStaticObjectMethod(env, cls->classRef(), cls->valueOf, &argument))
        .booleanValue();
}

jchar firstUnit(JNIEnv* env, jobject text) {
    JStringProxy string(env, text);
    try {
        return string.getStringChars()[0];
    } catch (const tether::Exception&) {
        return 0;
    }
}

template <typename T>
T numberAs(JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
    if constexpr (std::is_same_v<T, jboolean>) {
        return static_cast<jboolean>(number.read<jdouble>(env, ref) != 0.0);
    } else if constexpr (std::is_same_v<T, jchar>) {
        return static_cast<jchar>(number.read<jint>(env, ref));
    } else {
        return number.read<T>(env, ref);
    }
}

template <typename T>
T textAs(JNIEnv* env, jobject text) {
    if constexpr (std::is_same_v<T, jboolean>) {
        return parseBoolean(env, text);
    } else if constexpr (std::is_same_v<T, jchar>) {
        return firstUnit(env, text);
    } else {
        return parseAs<T>(env, text);
    }
}

/// The reads of what is no Number. They stand apart, so that a Number doesn't pay for what the parsers need of the
/// stack.
template <typename T>
[[gnu::noinline]] T nonNumberAs(JNIEnv* env, jobject ref) {
    T value{};
    if (JStringClassProxy::instance(env)->isInstance(env, ref)) {
        return textAs<T>(env, ref);
    }
    if (auto* boolean = JBooleanClassProxy::instance(env); boolean->isInstance(env, ref)) {
        value = static_cast<T>(env->CallBooleanMethod(ref, boolean->booleanValue));
    } else if (auto* character = JCharacterClassProxy::instance(env); character->isInstance(env, ref)) {
        value = static_cast<T>(env->CallCharMethod(ref, character->charValue));
    } else {
        return value;
    }
    tether::throwIfPending(env);
    return value;
}

}  // namespace

/// The four kinds of object in the order in which they are tested; anything else gives 0. Boxed values are asked
/// straight through their class proxies, since a proxy of their own would cost two references an element.
template <typename T>
T JObjectProxy::as() const {
    JNIEnv* const env = this->env();
    const auto& number = *JNumberClassProxy::instance(env);
    if (!number.isInstance(env, ref())) {
        return nonNumberAs<T>(env, ref());
    }
    const T value = numberAs<T>(env, ref(), number);
    tether::throwIfPending(env);
    return value;
}

template jboolean JObjectProxy::as() const;
template jchar JObjectProxy::as() const;
template jbyte JObjectProxy::as() const;
template jshort JObjectProxy::as() const;
template jint JObjectProxy::as() const;
template jlong JObjectProxy::as() const;
template jfloat JObjectProxy::as() const;
template jdouble JObjectProxy::as() const;

}  // namespace nativevrl
