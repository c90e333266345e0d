/// The native that gives an array in the Java form that its class has by itself.

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "tojava/naturalform.h"
#include "tojava/wholearray.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <algorithm>
#include <utility>
#include <vector>

using namespace nativevrl;

namespace {

/// The levels of an array under the nesting order in force.
LevelTable levelsInForce(const qxArray* array) {
    std::vector<unsigned> extents = extentsOf(array);
    if (!useJavaDimensionOrder) {
        return buildLevelTable(extents, MDimensionNestingOrder());
    }
    if (extents.size() > 1) {
        std::swap(extents[0], extents[1]);
        std::reverse(extents.begin(), extents.end());
    }
    return buildLevelTable(extents, JavaDimensionNestingOrder(static_cast<unsigned>(extents.size())));
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxArray2ObjectArray(JNIEnv* env, jclass, jobject handle,
                                                                            jboolean real) {
    return guarded<jobject>(env, nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, real != JNI_FALSE);
        const bool isReal = real == JNI_TRUE;
        if (array == nullptr) {
            return NewJObjectArrayProxy<JPrimitiveArrayProxy<jdouble>>(env, 0).detach();
        }
        return buildNaturally(env, array, isReal, [&](const auto& part) {
            using Leaf = LeafOf<decltype(part)>;
            requirePart(env, array, isReal);
            return array->isSparse() ? buildFull<Leaf>(env, array, part.view)
                                     : NestedWalk<Leaf>(env, part.view).build(levelsInForce(array));
        });
    });
}
