/// How an element of an object array becomes a primitive: the reads of JObjectProxy and the parser chain behind
/// those of strings.

#include "proxies/jboxedproxies.h"
#include "proxies/jnumberformatexception.h"
#include "proxies/numericcast.h"

namespace nativevrl {

namespace {

template <typename T>
T parseWith(JNIEnv* env, jobject text) {
    auto* cls = JBoxedNumberClassProxy<T>::instance(env);
    jvalue argument;
    argument.l = text;
    return tether::callStaticMethodA<T>(env, cls->classRef(), cls->parse, &argument);
}

bool isNumberFormatPending(JNIEnv* env) { return tether::isExceptionThrown(env, "java/lang/NumberFormatException"); }

/// Runs `parser`; a text that it refuses goes on to `next`, with its refusal forgotten. Any other failure stands.
template <typename Parser, typename Next>
auto parseOr(JNIEnv* env, Parser&& parser, Next&& next) -> decltype(next()) {
    try {
        return parser();
    } catch (const tether::Exception&) {
        if (!isNumberFormatPending(env)) {
            throw;
        }
        env->ExceptionClear();
    }
    return next();
}

/// The text by the parser of T, else as a double, else as a long, the latter two cast to T.
template <typename T>
T parseAs(JNIEnv* env, jobject text) {
    const auto asLastResort = [&] {
        try {
            return castElement<T>(parseWith<jlong>(env, text));
        } catch (const tether::Exception&) {
            if (isNumberFormatPending(env)) {
                throw JNumberFormatException();
            }
            throw;
        }
    };
    return parseOr(
        env, [&] { return parseWith<T>(env, text); },
        [&] {
            return parseOr(
                env, [&] { return castElement<T>(parseWith<jdouble>(env, text)); }, asLastResort);
        });
}

jboolean parseBoolean(JNIEnv* env, jobject text) {
    auto* cls = JBooleanClassProxy::instance(env);
    jvalue argument;
    argument.l = text;
    JBooleanProxy boxed(env, nullptr);
    boxed.attach(env->CallStaticObjectMethodA(cls->classRef(), cls->valueOf, &argument));
    tether::throwIfPending(env);
    return boxed.booleanValue();
}

jchar firstUnit(JNIEnv* env, jobject text) {
    JStringProxy string(env, text);
    try {
        return string.getStringChars()[0];
    } catch (const tether::Exception&) {
        return 0;
    }
}

/// The four kinds of object in the order in which they are tested; anything else gives 0. Boxed values are asked
/// straight through their class proxies, since a proxy of their own would cost two references an element.
template <typename T, typename FromNumber, typename FromString>
T readAs(const JObjectProxy& object, FromNumber&& fromNumber, FromString&& fromString) {
    JNIEnv* env = object.env();
    jobject ref = object.ref();
    T value{};
    if (auto* number = JNumberClassProxy::instance(env); number->isInstance(env, ref)) {
        value = fromNumber(env, ref, *number);
    } else if (JStringClassProxy::instance(env)->isInstance(env, ref)) {
        return fromString(env, ref);
    } else if (auto* boolean = JBooleanClassProxy::instance(env); boolean->isInstance(env, ref)) {
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

jboolean JObjectProxy::asBoolean() const {
    return readAs<jboolean>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return static_cast<jboolean>(env->CallDoubleMethod(ref, number.doubleValue) != 0.0);
        },
        parseBoolean);
}

jchar JObjectProxy::asChar() const {
    return readAs<jchar>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return static_cast<jchar>(env->CallIntMethod(ref, number.intValue));
        },
        firstUnit);
}

jbyte JObjectProxy::asByte() const {
    return readAs<jbyte>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return env->CallByteMethod(ref, number.byteValue);
        },
        parseAs<jbyte>);
}

jshort JObjectProxy::asShort() const {
    return readAs<jshort>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return env->CallShortMethod(ref, number.shortValue);
        },
        parseAs<jshort>);
}

jint JObjectProxy::asInt() const {
    return readAs<jint>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return env->CallIntMethod(ref, number.intValue);
        },
        parseAs<jint>);
}

jlong JObjectProxy::asLong() const {
    return readAs<jlong>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return env->CallLongMethod(ref, number.longValue);
        },
        parseAs<jlong>);
}

jfloat JObjectProxy::asFloat() const {
    return readAs<jfloat>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return env->CallFloatMethod(ref, number.floatValue);
        },
        parseAs<jfloat>);
}

jdouble JObjectProxy::asDouble() const {
    return readAs<jdouble>(
        *this,
        [](JNIEnv* env, jobject ref, const JNumberClassProxy& number) {
            return env->CallDoubleMethod(ref, number.doubleValue);
        },
        parseAs<jdouble>);
}

}  // namespace nativevrl
