#pragma once

#include "layout/leveltable.h"
#include "proxies/pinnedelements.h"
#include "qx/qx.h"

#include <jni.h>

#include <cstddef>
#include <cstdint>

/// From subscripts, which count from 1 and come one per dimension, to positions in column-major storage, which count
/// from 0, with the checks that stand before it. A failed check raises java.lang.ArrayIndexOutOfBoundsException and
/// throws tether::ArrayIndexOutOfBoundsException.
namespace nativevrl {

/// As many subscripts as there are dimensions, and each within its extent. Neither missing nor trailing ones are
/// let through. The Java array is pinned only when the count is right, and stays so for the caller.
void checkSubscripts(JNIEnv* env, const std::uint32_t* extents, std::uint32_t dimensionCount,
                     PinnedElements<jint>& subscripts, jsize length);

/// The same for subscripts that lie in native memory; for jint and unsigned.
template <typename Subscript>
void checkSubscripts(JNIEnv* env, const std::uint32_t* extents, std::uint32_t dimensionCount,
                     const Subscript* subscripts, std::size_t length);

/// Raises java.lang.ArrayIndexOutOfBoundsException.
[[noreturn]] void refuseIndex(JNIEnv* env, const char* message);

/// An index from 0 that must lie below `count`.
void checkIndex(JNIEnv* env, std::int64_t index, std::size_t count);

/// An index from 0 that must lie below the number of elements.
void checkLinearIndex(JNIEnv* env, const qxArray* array, std::int64_t index);

/// A size or position for Java. Above 2^31-1 it raises java.lang.IndexOutOfBoundsException and throws
/// tether::ArrayIndexOutOfBoundsException.
jint toJavaInt(JNIEnv* env, std::size_t value);

/// Position of the element with these subscripts, each of which `map` turns into one from 0. Products are checked and
/// throw std::overflow_error; the sum is not.
template <typename Subscript>
unsigned computeSingleSubscript(const std::uint32_t* extents, std::uint32_t dimensionCount, const Subscript* subscripts,
                                const IMapFunction<unsigned, unsigned>& map) {
    LevelWalker levels;
    unsigned position = 0;
    for (std::uint32_t i = 0; i < dimensionCount; ++i) {
        const LevelExtent level = levels.next(extents[i]);
        position += multiplyChecked(map.map(static_cast<unsigned>(subscripts[i])), level.stride);
    }
    return position;
}

}  // namespace nativevrl
