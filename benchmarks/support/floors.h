#pragma once

#include "proxies/jprimitive.h"

#include <jni.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

/// What no conversion of nested arrays gets around: the JNI calls of a walk, made straight.
namespace nativevrl::bench {

/// Stays in use for the whole run; borrowed from the virtual machine's frame of the program.
inline jclass classNamed(JNIEnv* env, const char* name) {
    return static_cast<jclass>(env->NewGlobalRef(env->FindClass(name)));
}

/// Visits every row of T[][]…[] that is `depth` levels deep, with the tests and the length that a walk asks for.
template <typename T, typename Visit>
void eachRow(JNIEnv* env, jobject array, int depth, jclass objects, jclass rows, Visit&& visit) {
    const bool isRow = env->IsInstanceOf(array, rows) != JNI_FALSE;
    if (depth == 1 && isRow) {
        visit(static_cast<typename JPrimitive<T>::Array>(array), env->GetArrayLength(static_cast<jarray>(array)));
        return;
    }
    if (env->IsInstanceOf(array, objects) == JNI_FALSE) {
        return;
    }
    const jsize length = env->GetArrayLength(static_cast<jarray>(array));
    for (jsize i = 0; i < length; ++i) {
        jobject element = env->GetObjectArrayElement(static_cast<jobjectArray>(array), i);
        eachRow<T>(env, element, depth - 1, objects, rows, visit);
        env->DeleteLocalRef(element);
    }
}

/// Measures the array and then pins its rows one after the other, for `copy` to take their elements.
template <typename T, typename Copy>
void takeRows(JNIEnv* env, jobject array, int depth, jclass objects, jclass rows, Copy&& copy) {
    jsize longest = 0;
    eachRow<T>(env, array, depth, objects, rows,
               [&](auto, jsize length) { longest = length > longest ? length : longest; });
    eachRow<T>(env, array, depth, objects, rows, [&](auto row, jsize length) {
        T* elements = (env->*JPrimitive<T>::getElements)(row, nullptr);
        copy(elements, static_cast<std::size_t>(length));
        (env->*JPrimitive<T>::releaseElements)(row, elements, 0);
    });
}

/// Takes the rows one behind another to `target`, with bare casts to its type.
template <typename T, typename Target>
void copyRows(JNIEnv* env, jobject array, int depth, jclass objects, jclass rows, Target* target) {
    takeRows<T>(env, array, depth, objects, rows, [&](const T* elements, std::size_t length) {
        if constexpr (std::is_same_v<T, Target>) {
            std::memcpy(target, elements, sizeof(T) * length);
        } else {
            std::transform(elements, elements + length, target, [](T value) { return static_cast<Target>(value); });
        }
        target += length;
    });
}

/// Takes the rows of T[count][] to column-major storage at `target`, each element by itself.
template <typename T, typename Target>
void scatterRows(JNIEnv* env, jobject array, std::size_t count, jclass objects, jclass rows, Target* target) {
    takeRows<T>(env, array, 2, objects, rows, [&](const T* elements, std::size_t length) {
        for (std::size_t i = 0; i < length; ++i) {
            target[i * count] = static_cast<Target>(elements[i]);
        }
        ++target;
    });
}

}  // namespace nativevrl::bench
