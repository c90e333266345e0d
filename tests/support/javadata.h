#pragma once

#include "proxies/jprimitive.h"
#include "qx/qx.h"

#include <jni.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Java data for tests, made and read straight through JNI, so that nothing of the library is under test here. What is
/// made is a local reference of the caller. What can't be made or read, because Java threw, is a std::runtime_error,
/// with the Java exception pending.
namespace nativevrl::test {

/// Throws std::runtime_error when a Java exception is pending.
void requireNoThrow(JNIEnv* env, const std::string& what);

jclass findClass(JNIEnv* env, const std::string& name);

// ---- Objects

jstring javaString(JNIEnv* env, std::u16string_view text);
/// A new object through the constructor of this signature.
jobject newObject(JNIEnv* env, const std::string& className, const char* signature,
                  const std::vector<jvalue>& arguments = {});
/// The result of a method that gives an object; a std::runtime_error when it throws.
jobject callObject(JNIEnv* env, jobject object, const char* method, const char* signature,
                   const std::vector<jvalue>& arguments = {});
/// The result of a method that gives an int.
jint callInt(JNIEnv* env, jobject object, const char* method, const char* signature,
             const std::vector<jvalue>& arguments = {});
/// Calls a method without a result.
void callVoid(JNIEnv* env, jobject object, const char* method, const char* signature,
              const std::vector<jvalue>& arguments = {});

/// A value in its wrapper class.
template <typename T>
jobject boxed(JNIEnv* env, T value) {
    const char signature[] = {'(', JPrimitive<T>::letter, ')', 'V', '\0'};
    return newObject(env, JPrimitive<T>::boxedClass, signature, {asArgument(value)});
}

/// A jvalue that holds an object.
jvalue objectArgument(jobject object);

// ---- Arrays

/// One level of nested data, outermost first: rows may be ragged.
template <typename T>
using Rows = std::vector<std::vector<T>>;
template <typename T>
using Pages = std::vector<Rows<T>>;

template <typename T>
typename JPrimitive<T>::Array primitiveArray(JNIEnv* env, const std::vector<T>& values) {
    const auto length = static_cast<jsize>(values.size());
    auto array = (env->*JPrimitive<T>::newArray)(length);
    requireNoThrow(env, "new array");
    (env->*JPrimitive<T>::setRegion)(array, 0, length, values.data());
    return array;
}

jintArray intArray(JNIEnv* env, const std::vector<jint>& values);

/// An array of the named element class (for an array class its descriptor, "[D" say).
jobjectArray objectArray(JNIEnv* env, const std::string& elementClass, const std::vector<jobject>& elements);

/// T[][]
template <typename T>
jobjectArray nested(JNIEnv* env, const Rows<T>& rows) {
    std::vector<jobject> elements;
    for (const auto& row : rows) {
        elements.push_back(primitiveArray<T>(env, row));
    }
    return objectArray(env, JPrimitive<T>::arrayClass, elements);
}

/// T[][][]
template <typename T>
jobjectArray nestedPages(JNIEnv* env, const Pages<T>& pages) {
    std::vector<jobject> elements;
    for (const auto& rows : pages) {
        elements.push_back(nested<T>(env, rows));
    }
    return objectArray(env, std::string("[") + JPrimitive<T>::arrayClass, elements);
}

// ---- Reading

std::u16string toUtf16(JNIEnv* env, jobject string);
/// A string as modified UTF-8; "" for null.
std::string toText(JNIEnv* env, jobject string);
/// Class name in slash form: "java/lang/String", "[D"; "null" for null.
std::string classNameOf(JNIEnv* env, jobject object);
/// What toString gives.
std::string describe(JNIEnv* env, jobject object);

/// Number of elements of any Java array.
std::size_t lengthOf(JNIEnv* env, jobject array);
/// Element of an object array.
jobject elementAt(JNIEnv* env, jobject array, std::size_t index);

/// The elements of a primitive array; a std::runtime_error for any other object.
template <typename T>
std::vector<T> toVector(JNIEnv* env, jobject array) {
    if (classNameOf(env, array) != JPrimitive<T>::arrayClass) {
        throw std::runtime_error("expected " + std::string(JPrimitive<T>::arrayClass) + ", got " +
                                 classNameOf(env, array));
    }
    auto primitives = static_cast<typename JPrimitive<T>::Array>(array);
    T* elements = (env->*JPrimitive<T>::getElements)(primitives, nullptr);
    std::vector<T> values(elements, elements + lengthOf(env, array));
    (env->*JPrimitive<T>::releaseElements)(primitives, elements, JNI_ABORT);
    return values;
}

/// The elements of a T[][].
template <typename T>
Rows<T> toRows(JNIEnv* env, jobject array) {
    Rows<T> rows;
    for (std::size_t i = 0; i < lengthOf(env, array); ++i) {
        jobject row = elementAt(env, array, i);
        rows.push_back(toVector<T>(env, row));
        env->DeleteLocalRef(row);
    }
    return rows;
}

/// Puts the value of a wrapper into the first element of a primitive array.
void storeUnboxed(JNIEnv* env, jobject array, jobject object);

/// The value in a wrapper of T's class; a std::runtime_error for any other object.
template <typename T>
T unboxed(JNIEnv* env, jobject object) {
    if (classNameOf(env, object) != JPrimitive<T>::boxedClass) {
        throw std::runtime_error("expected " + std::string(JPrimitive<T>::boxedClass) + ", got " +
                                 classNameOf(env, object));
    }
    auto array = primitiveArray<T>(env, {T()});
    storeUnboxed(env, array, object);
    const T value = toVector<T>(env, array).front();
    env->DeleteLocalRef(array);
    return value;
}

// ---- Handles

/// A NativePtr around an address.
jobject newHandle(JNIEnv* env, const void* address);
/// The address in a NativePtr.
void* addressIn(JNIEnv* env, jobject handle);
/// The array behind a NativePtr, which must not be null.
qxArray* arrayIn(JNIEnv* env, jobject handle);

/// The array behind an NVArray.
inline qxArray* arrayOf(JNIEnv* env, jobject wrapper) {
    return arrayIn(env, callObject(env, wrapper, "getValue", "()Lcom/norvane/toolbox/loomkit/internal/NativePtr;"));
}

/// Ends the array of an NVArray.
inline void close(JNIEnv* env, jobject wrapper) { callVoid(env, wrapper, "close", "()V"); }

}  // namespace nativevrl::test
