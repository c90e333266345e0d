#pragma once

#include "boundary/arrayhandle.h"
#include "qx/arrayowner.h"

#include "support/natives.h"

/// The creating natives under short names; all give a NativePtr, or null with a Java exception pending.
namespace nativevrl::test {

/// The array behind a new handle, which is ended; null for null.
inline qxArrayOwner takeArray(JNIEnv* env, jobject handle) {
    if (handle == nullptr) {
        return nullptr;
    }
    qxArrayOwner array(openHandle(env, handle));
    env->DeleteLocalRef(handle);
    return array;
}

inline jobject fromObjects(JNIEnv* env, jobject real, jobject imaginary, jint classId, jint complexity) {
    return NVKRT(qxObject2qxArray)(env, nullptr, real, imaginary, classId, complexity);
}

inline jobject fromFlat(JNIEnv* env, jintArray dims, jobject real, jobject imaginary, jint classId, jint complexity) {
    return NVKRT(qxCreateNumericArray)(env, nullptr, dims, real, imaginary, classId, complexity);
}

inline jobject stated(JNIEnv* env, jintArray dims, jint classId, jint complexity) {
    return NVKRT(qxCreateArray)(env, nullptr, dims, classId, complexity);
}

inline jobject fromTriplets(JNIEnv* env, jintArray rows, jintArray columns, jobject real, jobject imaginary, jint m,
                            jint n, jint room, jint classId, jint complexity) {
    return NVKRT(qxCreateSparseMatrix___3I_3ILjava_lang_Object_2Ljava_lang_Object_2IIIII)(
        env, nullptr, rows, columns, real, imaginary, m, n, room, classId, complexity);
}

inline jobject fromFull(JNIEnv* env, jobject real, jint classId) {
    return NVKRT(qxCreateSparseMatrix__Ljava_lang_Object_2Ljava_lang_Object_2II)(env, nullptr, real, nullptr, classId,
                                                                                 qxREAL);
}

/// The overload of the scalar native for each Java type.
#define LOOMKIT_SCALAR(Code, T)                                                                               \
    inline jobject fromScalar(JNIEnv* env, T real, T imaginary, jint classId, jint complexity) {              \
        return NVKRT(qxScalar2qxArray__##Code##Code##II)(env, nullptr, real, imaginary, classId, complexity); \
    }
LOOMKIT_SCALAR(D, jdouble)
LOOMKIT_SCALAR(F, jfloat)
LOOMKIT_SCALAR(J, jlong)
LOOMKIT_SCALAR(I, jint)
LOOMKIT_SCALAR(S, jshort)
LOOMKIT_SCALAR(B, jbyte)
LOOMKIT_SCALAR(Z, jboolean)
#undef LOOMKIT_SCALAR

inline jobject fromScalar(JNIEnv* env, jchar value, jchar, jint classId, jint) {
    return NVKRT(qxScalar2qxArray__CI)(env, nullptr, value, classId);
}

}  // namespace nativevrl::test
