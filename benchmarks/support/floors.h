#pragma once

#include "proxies/jprimitive.h"

#include <jni.h>

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <vector>

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

/// Some rows, padded so that the elements of a column don't all fall into the same cache sets.
template <typename T>
class PlainTile {
public:
    static constexpr std::size_t kRows = 64;

    explicit PlainTile(std::size_t columns) : pitch_(columns / 16 * 16 + 24), elements_(kRows * pitch_) {}

    T* row(std::size_t i) { return elements_.data() + i * pitch_; }

    /// Between the first `rows` rows and column-major storage, some columns at a time: `move(row, column)` for each.
    template <typename Move>
    static void eachElement(std::size_t rows, std::size_t columns, Move&& move) {
        constexpr std::size_t panel = 8;
        for (std::size_t first = 0; first < columns; first += panel) {
            for (std::size_t row = 0; row < rows; ++row) {
                for (std::size_t column = first; column < std::min(first + panel, columns); ++column) {
                    move(row, column);
                }
            }
        }
    }

private:
    std::size_t pitch_;
    std::vector<T> elements_;
};

/// Takes the rows of T[count][columns] to column-major storage at `target` by way of a tile.
template <typename T, typename Target>
void scatterTiles(JNIEnv* env, jobject array, std::size_t count, std::size_t columns, jclass objects, jclass rows,
                  Target* target) {
    PlainTile<Target> tile(columns);
    std::size_t filled = 0;
    std::size_t left = count;
    takeRows<T>(env, array, 2, objects, rows, [&](const T* elements, std::size_t length) {
        std::transform(elements, elements + length, tile.row(filled),
                       [](T value) { return static_cast<Target>(value); });
        --left;
        if (++filled == PlainTile<Target>::kRows || left == 0) {
            tile.eachElement(filled, columns,
                             [&](std::size_t i, std::size_t j) { target[j * count + i] = tile.row(i)[j]; });
            target += filled;
            filled = 0;
        }
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
