#include "tether/jnicalls.h"

#include "text/unicode.h"

#include <memory>
#include <string>
#include <type_traits>

namespace tether {

namespace {

struct LocalReferenceEnd {
    JNIEnv* env;
    void operator()(jobject reference) const noexcept { env->DeleteLocalRef(reference); }
};

/// Owns a local reference, `jclass` say.
template <typename Reference>
using LocalOwner = std::unique_ptr<std::remove_pointer_t<Reference>, LocalReferenceEnd>;

/// The result of a call that is null only when it failed.
template <typename Reference>
Reference checked(JNIEnv* env, Reference result) {
    if (result == nullptr) {
        if (env->ExceptionCheck() == JNI_FALSE) {
            throwOutOfMemory(env);
        }
        throw Exception();
    }
    return result;
}

void throwNew(JNIEnv* env, const char* className, const char* signature, const jvalue* arguments) {
    const LocalOwner<jclass> cls(findClass(env, className), {env});
    jmethodID constructor = getMethodID(env, cls.get(), "<init>", signature);
    const LocalOwner<jobject> thrown(newObjectA(env, cls.get(), constructor, arguments), {env});
    env->Throw(static_cast<jthrowable>(thrown.get()));
}

}  // namespace

void throwIfPending(JNIEnv* env) {
    if (env->ExceptionCheck() != JNI_FALSE) {
        throw Exception();
    }
}

void throwNamedException(JNIEnv* env, const char* className, const char* message) {
    if (env->ExceptionCheck() != JNI_FALSE) {
        return;
    }
    const LocalOwner<jstring> text(newStringUTF(env, message), {env});
    jvalue argument;
    argument.l = text.get();
    throwNew(env, className, "(Ljava/lang/String;)V", &argument);
}

void throwNamedException(JNIEnv* env, const char* className) {
    if (env->ExceptionCheck() == JNI_FALSE) {
        throwNew(env, className, "()V", nullptr);
    }
}

void throwOutOfMemory(JNIEnv* env) {
    throwNamedException(env, "java/lang/OutOfMemoryError");
    throw OutOfMemoryException();
}

void throwNullPointer(JNIEnv* env) {
    throwNamedException(env, "java/lang/NullPointerException");
    throw NullPointerException();
}

bool isExceptionThrown(JNIEnv* env, const char* className) {
    jthrowable pending = env->ExceptionOccurred();
    if (pending == nullptr) {
        return false;
    }
    // A class can't be looked up while an exception is pending, so it steps aside for the test.
    env->ExceptionClear();
    jclass cls = env->FindClass(className);
    const bool matches = cls != nullptr && env->IsInstanceOf(pending, cls) != JNI_FALSE;
    env->ExceptionClear();
    env->Throw(pending);
    env->DeleteLocalRef(cls);
    env->DeleteLocalRef(pending);
    return matches;
}

jclass findClass(JNIEnv* env, const char* name) {
    throwIfPending(env);
    jclass cls = env->FindClass(name);
    if (cls == nullptr) {
        throw FindClassException(name);
    }
    return cls;
}

jmethodID getMethodID(JNIEnv* env, jclass cls, const char* name, const char* signature) {
    throwIfPending(env);
    return checked(env, env->GetMethodID(cls, name, signature));
}

jmethodID getStaticMethodID(JNIEnv* env, jclass cls, const char* name, const char* signature) {
    throwIfPending(env);
    if (cls == nullptr) {
        throwNullPointer(env);
    }
    return checked(env, env->GetStaticMethodID(cls, name, signature));
}

template <>
void callMethodA<void>(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments) {
    env->CallVoidMethodA(object, method, arguments);
    throwIfPending(env);
}

template <>
jboolean callMethodA<jboolean>(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments) {
    const jboolean result = env->CallBooleanMethodA(object, method, arguments);
    throwIfPending(env);
    return result;
}

template <>
jint callMethodA<jint>(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments) {
    const jint result = env->CallIntMethodA(object, method, arguments);
    throwIfPending(env);
    return result;
}

template <>
jlong callMethodA<jlong>(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments) {
    const jlong result = env->CallLongMethodA(object, method, arguments);
    throwIfPending(env);
    return result;
}

namespace {

template <typename T>
T callStatic(JNIEnv* env, T (JNIEnv::*call)(jclass, jmethodID, const jvalue*), jclass cls, jmethodID method,
             const jvalue* arguments) {
    const T result = (env->*call)(cls, method, arguments);
    throwIfPending(env);
    return result;
}

}  // namespace

template <>
jbyte callStaticMethodA<jbyte>(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    return callStatic(env, &JNIEnv::CallStaticByteMethodA, cls, method, arguments);
}

template <>
jshort callStaticMethodA<jshort>(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    return callStatic(env, &JNIEnv::CallStaticShortMethodA, cls, method, arguments);
}

template <>
jint callStaticMethodA<jint>(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    return callStatic(env, &JNIEnv::CallStaticIntMethodA, cls, method, arguments);
}

template <>
jlong callStaticMethodA<jlong>(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    return callStatic(env, &JNIEnv::CallStaticLongMethodA, cls, method, arguments);
}

template <>
jfloat callStaticMethodA<jfloat>(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    return callStatic(env, &JNIEnv::CallStaticFloatMethodA, cls, method, arguments);
}

template <>
jdouble callStaticMethodA<jdouble>(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    return callStatic(env, &JNIEnv::CallStaticDoubleMethodA, cls, method, arguments);
}

jobject newObjectA(JNIEnv* env, jclass cls, jmethodID constructor, const jvalue* arguments) {
    throwIfPending(env);
    return checked(env, env->NewObjectA(cls, constructor, arguments));
}

jobjectArray newObjectArray(JNIEnv* env, jsize length, jclass elementClass) {
    throwIfPending(env);
    return checked(env, env->NewObjectArray(length, elementClass, nullptr));
}

jobject getObjectArrayElement(JNIEnv* env, jobjectArray array, jsize index) {
    jobject element = env->GetObjectArrayElement(array, index);
    if (element == nullptr) {
        throwIfPending(env);
    }
    return element;
}

void setObjectArrayElement(JNIEnv* env, jobjectArray array, int index, jobject value) {
    env->SetObjectArrayElement(array, index, value);
    throwIfPending(env);
}

jstring newString(JNIEnv* env, const jchar* units, jsize length) {
    static constexpr jchar empty = 0;
    throwIfPending(env);
    return checked(env, env->NewString(units == nullptr ? &empty : units, length));
}

jstring newStringUTF(JNIEnv* env, const char* text) {
    throwIfPending(env);
    if (text::isModifiedUtf8(text)) {
        return checked(env, env->NewStringUTF(text));
    }
    const std::u16string units = text::utf16FromUtf8(text);
    return newString(env, reinterpret_cast<const jchar*>(units.data()), static_cast<jsize>(units.size()));
}

const jchar* getStringChars(JNIEnv* env, jstring string) { return checked(env, env->GetStringChars(string, nullptr)); }

const char* getStringUTFChars(JNIEnv* env, jstring string) {
    return checked(env, env->GetStringUTFChars(string, nullptr));
}

}  // namespace tether
