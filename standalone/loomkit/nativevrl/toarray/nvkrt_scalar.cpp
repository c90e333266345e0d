/// Natives that make a 1-by-1 array around a primitive value.

#include "boundary/arrayparts.h"
#include "toarray/creating.h"
#include "toarray/nativeelement.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;
using namespace nativevrl::JConvert;

namespace {

template <typename Target, typename S>
void storeScalar(qxArray* array, bool real, S value) {
    *static_cast<typename Target::Storage*>(partOf(array, real)) = Target::cast(value);
}

/// A class without elements of its own keeps what it was made with.
template <typename S>
jobject createScalar(JNIEnv* env, S real, S imaginary, jint classId, jint complexity) {
    return creating(env, [&] {
        qxArrayOwner array(
            qxCreateNumericMatrix(1, 1, static_cast<qxClassID>(classId), static_cast<qxComplexity>(complexity)));
        if (array == nullptr) {
            raise(env, "java/lang/RuntimeException", "Unable to allocate native array");
        }
        qxSetArrayScope(array.get(), qxFREE_SCOPE);
        if (complexity == qxCOMPLEX && !isComplex(array.get())) {
            checkImaginaryAccess(env, array.release(), false);  // its failure leaves the array to nobody
        }
        visitNativeElement(classId, [&](auto target) {
            storeScalar<decltype(target)>(array.get(), true, real);
            if (complexity == qxCOMPLEX) {
                storeScalar<decltype(target)>(array.get(), false, imaginary);
            }
        });
        return array;
    });
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__DDII(JNIEnv* env, jclass, jdouble real,
                                                                               jdouble imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar<jdouble>(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__FFII(JNIEnv* env, jclass, jfloat real,
                                                                               jfloat imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar<jdouble>(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__JJII(JNIEnv* env, jclass, jlong real,
                                                                               jlong imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__IIII(JNIEnv* env, jclass, jint real,
                                                                               jint imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__SSII(JNIEnv* env, jclass, jshort real,
                                                                               jshort imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__BBII(JNIEnv* env, jclass, jbyte real,
                                                                               jbyte imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__ZZII(JNIEnv* env, jclass, jboolean real,
                                                                               jboolean imaginary, jint classId,
                                                                               jint complexity) {
    return createScalar(env, real, imaginary, classId, complexity);
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxScalar2qxArray__CI(JNIEnv* env, jclass, jchar value,
                                                                             jint classId) {
    return createScalar<jchar>(env, value, 0, classId, qxREAL);
}
