#pragma once

#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "tojava/nestedwalk.h"
#include "tojava/sparsewalk.h"

#include <cstddef>
#include <vector>

/// Whole arrays to Java, one part at a time: what the natives share around the walks.
namespace nativevrl {

/// The block of a part. Raises java.lang.NullPointerException when it is missing and there are elements.
const void* requirePart(JNIEnv* env, const qxArray* array, bool real);

/// The extents of an array, first dimension first.
std::vector<unsigned> dimensionsOf(const qxArray* array);

/// A row without elements.
template <typename Leaf>
jobject buildEmpty(JNIEnv* env) {
    Leaf leaf(env, 0);
    leaf.write(0, nullptr, 0);
    return leaf.detach();
}

/// The nested array of a part over rows of Leaf; two levels, zeros included, for a sparse array.
template <typename Leaf>
jobject buildNested(JNIEnv* env, const qxArray* array, bool real, const ElementReader<typename Leaf::Element>& reader) {
    if (array->isSparse()) {
        return SparseWalk<Leaf>(env, array, partOf(array, real), reader).build();
    }
    const void* data = requirePart(env, array, real);
    const LevelTable levels = buildLevelTable(dimensionsOf(array), MDimensionNestingOrder());
    return NestedWalk<Leaf>(env, reader).build(data, levels.data(), levels.size());
}

/// The shape of the natives that give a numeric array as nested rows of Leaf. A null array gives one empty row.
/// Raises java.lang.RuntimeException for a class that is not numeric, logical and char among them.
template <typename Leaf>
jobject nestedRead(JNIEnv* env, jobject handle, jboolean real) {
    return guarded<jobject>(nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, real != JNI_FALSE);
        if (array == nullptr) {
            return buildEmpty<Leaf>(env);
        }
        const qxClassID classId = classIdOf(array);
        ElementReader<typename Leaf::Element> reader{};
        if (!isNumericClass(classId) || !findReader(classId, reader)) {
            raise(env, "java/lang/RuntimeException", "could not convert from non-primitive array type");
        }
        return buildNested<Leaf>(env, array, real != JNI_FALSE, reader);
    });
}

/// The shape of the natives that give the stored elements of an array as one row of Leaf, in storage order. The array
/// must not be null. Raises java.lang.UnsupportedOperationException for a class without numbers, truth values or text.
template <typename Leaf>
jobject flatRead(JNIEnv* env, jobject handle, jboolean real) {
    return guarded<jobject>(nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, real != JNI_FALSE);
        ElementReader<typename Leaf::Element> reader{};
        if (!findReader(classIdOf(array), reader)) {
            raise(env, "java/lang/UnsupportedOperationException",
                  "getData is not supported for TAVRIX arrays of this type.");
        }
        const void* data = requirePart(env, array, real != JNI_FALSE);
        return NestedWalk<Leaf>(env, reader).buildRow(data, 1, storedElementCount(array));
    });
}

}  // namespace nativevrl
