/// The native that gives an array in the Java form that its class has by itself.

#include "layout/visitclass.h"
#include "tojava/wholearray.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <algorithm>
#include <utility>
#include <vector>

using namespace nativevrl;

namespace {

/// The levels of an array under the nesting order in force.
LevelTable levelsInForce(const qxArray* array) {
    std::vector<unsigned> dimensions = dimensionsOf(array);
    if (!useJavaDimensionOrder) {
        return buildLevelTable(dimensions, MDimensionNestingOrder());
    }
    if (dimensions.size() > 1) {
        std::swap(dimensions[0], dimensions[1]);
        std::reverse(dimensions.begin(), dimensions.end());
    }
    return buildLevelTable(dimensions, JavaDimensionNestingOrder(static_cast<unsigned>(dimensions.size())));
}

template <typename Leaf>
jobject buildView(JNIEnv* env, const qxArray* array, bool real) {
    using Element = typename Leaf::Element;
    const void* data = requirePart(env, array, real);
    if (array->isSparse()) {
        return SparseWalk<Leaf>(env, array, data, readerOf<Element, Element>()).build();
    }
    const LevelTable levels = levelsInForce(array);
    return NestedWalk<Leaf>(env, readerOf<Element, Element>()).build(data, levels.data(), levels.size());
}

jobject buildViewOfSlots(JNIEnv* env, qxClassID classId, const qxArray* array, bool real) {
    if (classId != qxCELL_CLASS && classId != qxSTRUCT_CLASS && classId != qxFUNCTION_CLASS) {
        raise(env, "java/lang/UnsupportedOperationException",
              "Can not convert the given TAVRIX array type to a Java type.");
    }
    return buildView<SlotLeaf>(env, array, real);
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxArray2ObjectArray(JNIEnv* env, jclass, jobject handle,
                                                                            jboolean real) {
    return guarded<jobject>(nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, real != JNI_FALSE);
        const bool isReal = real == JNI_TRUE;
        if (array == nullptr) {
            return NewJObjectArrayProxy<JPrimitiveArrayProxy<jdouble>>(env, 0).detach();
        }
        return visitClass(
            classIdOf(array),
            [&](auto element) { return buildView<PrimitiveLeaf<ElementOf<decltype(element)>>>(env, array, isReal); },
            [&](qxClassID classId) { return buildViewOfSlots(env, classId, array, isReal); });
    });
}
