/// Natives that make an array of stated dimensions, or from Java data as it is.

#include "boundary/arrayparts.h"
#include "proxies/jobjectarrayproxy.h"
#include "proxies/pinnedelements.h"
#include "qx/arrayowner.h"
#include "toarray/arraycreation.h"
#include "toarray/classification.h"
#include "toarray/creating.h"
#include "toarray/flatstore.h"
#include "toarray/jconvert.h"
#include "toarray/plainextents.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;
using namespace nativevrl::JConvert;

namespace {

qxArrayOwner createStated(JNIEnv* env, jintArray dims, qxClassID classId, jint complexity) {
    JNVArrayPropertySpecifier stated(env, dims, classId, static_cast<qxComplexity>(complexity));
    return createArrayFromProperties(env, stated);
}

qxArrayOwner createNumeric(JNIEnv* env, jintArray dims, jobject realData, jobject imagData, jint classId,
                           jint complexity) {
    JavaKindReader kindOf(env);
    const qxClassID decided =
        classId == qxUNKNOWN_CLASS ? classifyJavaObject(kindOf, realData, true) : static_cast<qxClassID>(classId);
    qxArrayOwner array = createStated(env, dims, decided, complexity);
    setPartData(env, array.get(), JObjectProxy(env, realData), true);
    if (imagData != nullptr) {
        checkImaginaryAccess(env, array.get(), false);
        setPartData(env, array.get(), JObjectProxy(env, imagData), false);
    }
    return array;
}

qxArray* createStructOf(JNIEnv* env, jintArray dims) {
    if (dims == nullptr || env->GetArrayLength(dims) == 0) {
        return qxCreateStructMatrix(0, 0, 0, nullptr);
    }
    const PinnedElements<jint> pinned(env, dims);
    const PlainExtents extents(pinned.begin(), pinned.end());
    return qxCreateStructArray(extents.count(), extents.data(), 0, nullptr);
}

void addFields(JNIEnv* env, qxArray* array, jobjectArray fieldNames) {
    JObjectArrayProxy<JStringProxy> names(env, fieldNames);
    const jsize count = names.length();
    for (jsize i = 0; i < count; ++i) {
        auto name = names.get(i);
        if (name.length() > 0 && qxAddField(array, name.getStringUTFChars()) < 0) {
            tether::throwOutOfMemory(env);
        }
    }
}

qxArrayOwner createStruct(JNIEnv* env, jintArray dims, jobjectArray fieldNames) {
    qxArrayOwner array(createStructOf(env, dims));
    if (array == nullptr) {
        raise(env, "java/lang/RuntimeException", "Unable to allocate native array");
    }
    qxSetArrayScope(array.get(), qxFREE_SCOPE);
    addFields(env, array.get(), fieldNames);
    return array;
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateArray(JNIEnv* env, jclass, jintArray dims, jint classId,
                                                                      jint complexity) {
    return creating(env, [&] { return createStated(env, dims, static_cast<qxClassID>(classId), complexity); });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateNumericArray(JNIEnv* env, jclass, jintArray dims,
                                                                             jobject realData, jobject imagData,
                                                                             jint classId, jint complexity) {
    return creating(env, [&] { return createNumeric(env, dims, realData, imagData, classId, complexity); });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateStructArray(JNIEnv* env, jclass, jintArray dims,
                                                                            jobjectArray fieldNames) {
    return creating(env, [&] { return createStruct(env, dims, fieldNames); });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxObject2qxArray(JNIEnv* env, jclass, jobject realData,
                                                                         jobject imagData, jint classId,
                                                                         jint complexity) {
    return creating(env, [&] {
        const JObjectProxy real(env, realData);
        const JObjectProxy imaginary(env, imagData);
        return convertObjectPair(env, real, imaginary, static_cast<qxClassID>(classId),
                                 static_cast<qxComplexity>(complexity));
    });
}
