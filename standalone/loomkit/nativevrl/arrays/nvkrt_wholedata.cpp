/// Natives that move a whole part of an array in storage order.

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "proxies/jobjectproxy.h"
#include "toarray/flatstore.h"
#include "tojava/naturalform.h"
#include "tojava/wholearray.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

namespace {

/// The stored run of one part as a new Java array; only the stored values of a sparse array.
jobject storedRun(JNIEnv* env, const qxArray* array, bool real) {
    requirePart(env, array, real);
    return buildNaturally(env, array, real, [&](const auto& part) {
        return buildRun<LeafOf<decltype(part)>>(env, part.view, storedElementCount(array));
    });
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetData(JNIEnv* env, jclass, jobject handle, jboolean real) {
    return guarded<jobject>(env, nullptr, [&] {
        const bool isReal = real != JNI_FALSE;
        const qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, isReal);
        return array == nullptr ? nullptr : storedRun(env, array, isReal);
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetData(JNIEnv* env, jclass, jobject handle, jobject data,
                                                               jboolean real) {
    guarded(env, [&] {
        const bool isReal = real != JNI_FALSE;
        qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, isReal);
        JConvert::setPartData(env, array, JObjectProxy(env, data), isReal);
    });
}
