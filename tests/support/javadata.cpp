#include "support/javadata.h"

#include <algorithm>
#include <cstdint>

namespace nativevrl::test {

namespace {

constexpr const char* nativePtrClass = "com/norvane/toolbox/loomkit/internal/NativePtr";

jmethodID methodOf(JNIEnv* env, jobject object, const char* name, const char* signature) {
    jclass cls = env->GetObjectClass(object);
    jmethodID method = env->GetMethodID(cls, name, signature);
    requireNoThrow(env, name);
    env->DeleteLocalRef(cls);
    return method;
}

const jvalue* pointerTo(const std::vector<jvalue>& arguments) { return arguments.empty() ? nullptr : arguments.data(); }

}  // namespace

void requireNoThrow(JNIEnv* env, const std::string& what) {
    if (env->ExceptionCheck() != JNI_FALSE) {
        throw std::runtime_error("Java threw: " + what);
    }
}

jclass findClass(JNIEnv* env, const std::string& name) {
    jclass cls = env->FindClass(name.c_str());
    requireNoThrow(env, name);
    return cls;
}

jstring javaString(JNIEnv* env, std::u16string_view text) {
    jstring string = env->NewString(reinterpret_cast<const jchar*>(text.data()), static_cast<jsize>(text.size()));
    requireNoThrow(env, "new string");
    return string;
}

jobject newObject(JNIEnv* env, const std::string& className, const char* signature,
                  const std::vector<jvalue>& arguments) {
    jclass cls = findClass(env, className);
    jmethodID constructor = env->GetMethodID(cls, "<init>", signature);
    requireNoThrow(env, className + signature);
    jobject object = env->NewObjectA(cls, constructor, pointerTo(arguments));
    requireNoThrow(env, "new " + className);
    env->DeleteLocalRef(cls);
    return object;
}

jobject callObject(JNIEnv* env, jobject object, const char* method, const char* signature,
                   const std::vector<jvalue>& arguments) {
    jobject result = env->CallObjectMethodA(object, methodOf(env, object, method, signature), pointerTo(arguments));
    requireNoThrow(env, method);
    return result;
}

jint callInt(JNIEnv* env, jobject object, const char* method, const char* signature,
             const std::vector<jvalue>& arguments) {
    jint result = env->CallIntMethodA(object, methodOf(env, object, method, signature), pointerTo(arguments));
    requireNoThrow(env, method);
    return result;
}

void callVoid(JNIEnv* env, jobject object, const char* method, const char* signature,
              const std::vector<jvalue>& arguments) {
    env->CallVoidMethodA(object, methodOf(env, object, method, signature), pointerTo(arguments));
    requireNoThrow(env, method);
}

jvalue objectArgument(jobject object) {
    jvalue argument = {};
    argument.l = object;
    return argument;
}

jintArray intArray(JNIEnv* env, const std::vector<jint>& values) { return primitiveArray<jint>(env, values); }

jobjectArray objectArray(JNIEnv* env, const std::string& elementClass, const std::vector<jobject>& elements) {
    jclass cls = findClass(env, elementClass);
    jobjectArray array = env->NewObjectArray(static_cast<jsize>(elements.size()), cls, nullptr);
    requireNoThrow(env, "new array of " + elementClass);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        env->SetObjectArrayElement(array, static_cast<jsize>(i), elements[i]);
        requireNoThrow(env, "element of " + elementClass);
    }
    env->DeleteLocalRef(cls);
    return array;
}

std::u16string toUtf16(JNIEnv* env, jobject string) {
    auto text = static_cast<jstring>(string);
    std::u16string units(static_cast<std::size_t>(env->GetStringLength(text)), u'\0');
    env->GetStringRegion(text, 0, static_cast<jsize>(units.size()), reinterpret_cast<jchar*>(units.data()));
    return units;
}

std::string toText(JNIEnv* env, jobject string) {
    if (string == nullptr) {
        return {};
    }
    const char* chars = env->GetStringUTFChars(static_cast<jstring>(string), nullptr);
    std::string text(chars);
    env->ReleaseStringUTFChars(static_cast<jstring>(string), chars);
    return text;
}

std::string classNameOf(JNIEnv* env, jobject object) {
    if (object == nullptr) {
        return "null";
    }
    jclass cls = env->GetObjectClass(object);
    jobject name = callObject(env, cls, "getName", "()Ljava/lang/String;");
    std::string text = toText(env, name);
    std::replace(text.begin(), text.end(), '.', '/');
    env->DeleteLocalRef(name);
    env->DeleteLocalRef(cls);
    return text;
}

std::string describe(JNIEnv* env, jobject object) {
    return object == nullptr ? "null" : toText(env, callObject(env, object, "toString", "()Ljava/lang/String;"));
}

std::size_t lengthOf(JNIEnv* env, jobject array) {
    return static_cast<std::size_t>(env->GetArrayLength(static_cast<jarray>(array)));
}

jobject elementAt(JNIEnv* env, jobject array, std::size_t index) {
    jobject element = env->GetObjectArrayElement(static_cast<jobjectArray>(array), static_cast<jsize>(index));
    requireNoThrow(env, "element of an array");
    return element;
}

void storeUnboxed(JNIEnv* env, jobject array, jobject object) {
    jclass reflection = findClass(env, "java/lang/reflect/Array");
    jmethodID set = env->GetStaticMethodID(reflection, "set", "(Ljava/lang/Object;ILjava/lang/Object;)V");
    requireNoThrow(env, "Array.set");
    const jvalue arguments[] = {objectArgument(array), {}, objectArgument(object)};
    env->CallStaticVoidMethodA(reflection, set, arguments);
    requireNoThrow(env, "Array.set()");
    env->DeleteLocalRef(reflection);
}

jobject newHandle(JNIEnv* env, const void* address) {
    jvalue argument = {};
    argument.j = static_cast<jlong>(reinterpret_cast<std::intptr_t>(address));
    return newObject(env, nativePtrClass, "(J)V", {argument});
}

void* addressIn(JNIEnv* env, jobject handle) {
    const jlong address = env->CallLongMethodA(handle, methodOf(env, handle, "get", "()J"), nullptr);
    requireNoThrow(env, "NativePtr.get");
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(address));
}

qxArray* arrayIn(JNIEnv* env, jobject handle) {
    if (handle == nullptr) {
        throw std::runtime_error("expected a NativePtr, got null");
    }
    return static_cast<qxArray*>(addressIn(env, handle));
}

}  // namespace nativevrl::test
