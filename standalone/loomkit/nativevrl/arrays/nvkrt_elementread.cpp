/// Natives that read one element, by an index from 0 or by one subscript from 1 per dimension.

#include "arrays/elementread.h"
#include "arrays/objectread.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

#define LOOMKIT_READ(Name, T)                                                                                                 \
    T Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2IZ(   \
        JNIEnv* env, jclass, jobject handle, jint index, jboolean real) {                                                     \
        return readElement<T>(env, handle, index, real != JNI_FALSE);                                                         \
    }                                                                                                                         \
    T Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3IZ( \
        JNIEnv* env, jclass, jobject handle, jintArray subscripts, jboolean real) {                                           \
        return readElement<T>(env, handle, subscripts, real != JNI_FALSE);                                                    \
    }
LOOMKIT_READ(Double, jdouble)
LOOMKIT_READ(Float, jfloat)
LOOMKIT_READ(Long, jlong)
LOOMKIT_READ(Int, jint)
LOOMKIT_READ(Short, jshort)
LOOMKIT_READ(Byte, jbyte)
#undef LOOMKIT_READ

#define LOOMKIT_READ_REAL(Name, T)                                                                                           \
    T Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2I(   \
        JNIEnv* env, jclass, jobject handle, jint index) {                                                                   \
        return readElement<T>(env, handle, index, true);                                                                     \
    }                                                                                                                        \
    T Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I( \
        JNIEnv* env, jclass, jobject handle, jintArray subscripts) {                                                         \
        return readElement<T>(env, handle, subscripts, true);                                                                \
    }
LOOMKIT_READ_REAL(Char, jchar)
LOOMKIT_READ_REAL(Boolean, jboolean)
#undef LOOMKIT_READ_REAL

jobject
Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetObjectAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2IZ(
    JNIEnv* env, jclass, jobject handle, jint index, jboolean real) {
    return readObject(env, handle, index, real != JNI_FALSE);
}

jobject
Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetObjectAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3IZ(
    JNIEnv* env, jclass, jobject handle, jintArray subscripts, jboolean real) {
    return readObject(env, handle, subscripts, real != JNI_FALSE);
}
