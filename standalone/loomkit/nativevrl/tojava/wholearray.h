#pragma once

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "tojava/nestedwalk.h"
#include "tojava/sparsewalk.h"

/// Whole arrays to Java, one part at a time: what the natives share around the walks.
namespace nativevrl {

/// A row without elements.
template <typename Leaf>
jobject buildEmpty(JNIEnv* env) {
    return Leaf(env, 0).detach();
}

/// The full matrix of a sparse array's part over rows of Leaf.
template <typename Leaf>
jobject buildFull(JNIEnv* env, const qxArray* array, const PartView<typename Leaf::Element>& part) {
    return SparseWalk<Leaf>(env, SparseColumns::of(array), part).build();
}

/// The first `count` elements of a part as one row of Leaf.
template <typename Leaf>
jobject buildRun(JNIEnv* env, const PartView<typename Leaf::Element>& part, std::size_t count) {
    return NestedWalk<Leaf>(env, part).buildRow(1, count);
}

/// The shape of the natives that give a numeric array as nested rows of Leaf, a sparse one as its full matrix. A null
/// array gives one empty row. Raises java.lang.RuntimeException for a class that is not numeric, logical and char among
/// them.
template <typename Leaf>
jobject nestedRead(JNIEnv* env, jobject handle, jboolean real) {
    using View = PartView<typename Leaf::Element>;
    return guarded<jobject>(env, nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        const bool isReal = real != JNI_FALSE;
        checkImaginaryAccess(env, array, isReal);
        if (array == nullptr) {
            return buildEmpty<Leaf>(env);
        }
        const auto part = isNumericClass(classIdOf(array)) ? View::of(array, isReal) : std::nullopt;
        if (!part) {
            raise(env, "java/lang/RuntimeException", "could not convert from non-primitive array type");
        }
        if (array->isSparse()) {
            return buildFull<Leaf>(env, array, *part);
        }
        requirePart(env, array, isReal);
        return NestedWalk<Leaf>(env, *part).build(buildLevelTable(extentsOf(array), MDimensionNestingOrder()));
    });
}

/// The shape of the natives that give the stored elements of an array as one row of Leaf, in storage order. The array
/// must not be null. Raises java.lang.UnsupportedOperationException for a class without numbers, truth values or text.
template <typename Leaf>
jobject flatRead(JNIEnv* env, jobject handle, jboolean real) {
    return guarded<jobject>(env, nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        const bool isReal = real != JNI_FALSE;
        checkImaginaryAccess(env, array, isReal);
        const auto part = PartView<typename Leaf::Element>::of(array, isReal);
        if (!part) {
            raise(env, "java/lang/UnsupportedOperationException",
                  "getData is not supported for TAVRIX arrays of this type.");
        }
        requirePart(env, array, isReal);
        return buildRun<Leaf>(env, *part, storedElementCount(array));
    });
}

}  // namespace nativevrl
