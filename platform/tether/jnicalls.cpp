#include "tether/jnicalls.h"

#include "tether/localref.h"
#include "text/unicode.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tether {

namespace {

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
    const LocalRef<jclass> cls(env, findClass(env, className));
    jmethodID constructor = getMethodID(env, cls.get(), "<init>", signature);
    const LocalRef<jobject> thrown(env, newObjectA(env, cls.get(), constructor, arguments));
    env->Throw(static_cast<jthrowable>(thrown.get()));
}

/// Whether a class has a name, in slash form. False with an exception pending when Java can't tell.
bool isNamed(JNIEnv* env, jclass cls, const std::string_view name) {
    const LocalRef<jclass> classClass(env, env->GetObjectClass(cls));
    jmethodID getName = env->GetMethodID(classClass.get(), "getName", "()Ljava/lang/String;");
    if (getName == nullptr) {
        return false;
    }
    const LocalRef<jstring> text(env, static_cast<jstring>(env->CallObjectMethodA(cls, getName, nullptr)));
    const bool isTold = env->ExceptionCheck() == JNI_FALSE && text;
    const char* characters = isTold ? env->GetStringUTFChars(text.get(), nullptr) : nullptr;
    if (characters == nullptr) {
        return false;
    }
    const std::string_view dotted(characters);
    const bool matches = std::equal(dotted.begin(), dotted.end(), name.begin(), name.end(),
                                    [](char ofJava, char ours) { return ofJava == (ours == '/' ? '.' : ours); });
    env->ReleaseStringUTFChars(text.get(), characters);
    return matches;
}

/// Whether the class of an object, or one above it, has a name: for a class that can't be looked up from here.
bool isOfClassNamed(JNIEnv* env, jobject object, const char* className) {
    LocalRef<jclass> cls(env, env->GetObjectClass(object));
    while (cls) {
        if (isNamed(env, cls.get(), className)) {
            return true;
        }
        if (env->ExceptionCheck() != JNI_FALSE) {
            return false;
        }
        cls = LocalRef<jclass>(env, env->GetSuperclass(cls.get()));
    }
    return false;
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
    const LocalRef<jstring> text(env, newStringUTF(env, message));
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
    const LocalRef<jthrowable> pending(env, env->ExceptionOccurred());
    if (!pending) {
        return false;
    }
    // A class can't be looked up while an exception is pending, so it steps aside for the test.
    env->ExceptionClear();
    const LocalRef<jclass> cls(env, env->FindClass(className));
    env->ExceptionClear();
    const bool matches =
        cls ? env->IsInstanceOf(pending.get(), cls.get()) != JNI_FALSE : isOfClassNamed(env, pending.get(), className);
    env->ExceptionClear();
    env->Throw(pending.get());
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
    throwIfPending(env);
    return nextObjectArrayElement(env, array, index);
}

jobject nextObjectArrayElement(JNIEnv* env, jobjectArray array, jsize index) {
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
    if (units == nullptr && length > 0) {
        throwNullPointer(env);
    }
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

const jchar* getStringChars(JNIEnv* env, jstring string) {
    throwIfPending(env);
    return checked(env, env->GetStringChars(string, nullptr));
}

const char* getStringUTFChars(JNIEnv* env, jstring string) {
    throwIfPending(env);
    return checked(env, env->GetStringUTFChars(string, nullptr));
}

}  // namespace tether
