/// Natives that write one element, at an index from 0 or at one subscript from 1 per dimension.

#include "arrays/elementwrite.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

#define LOOMKIT_WRITE(Code, T)                                                                                                  \
    void                                                                                                                        \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2I##Code##Z(   \
            JNIEnv* env, jclass, jobject handle, jint index, T value, jboolean real) {                                          \
        writeElement(env, handle, index, value, real != JNI_FALSE);                                                             \
    }                                                                                                                           \
    void                                                                                                                        \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I##Code##Z( \
            JNIEnv* env, jclass, jobject handle, jintArray subscripts, T value, jboolean real) {                                \
        writeElement(env, handle, subscripts, value, real != JNI_FALSE);                                                        \
    }
LOOMKIT_WRITE(Ljava_lang_Object_2, jobject)
LOOMKIT_WRITE(D, jdouble)
LOOMKIT_WRITE(F, jfloat)
LOOMKIT_WRITE(J, jlong)
LOOMKIT_WRITE(I, jint)
LOOMKIT_WRITE(S, jshort)
LOOMKIT_WRITE(B, jbyte)
#undef LOOMKIT_WRITE

#define LOOMKIT_WRITE_REAL(Code, T)                                                                                          \
    void                                                                                                                     \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2I##Code(   \
            JNIEnv* env, jclass, jobject handle, jint index, T value) {                                                      \
        writeElement(env, handle, index, value, true);                                                                       \
    }                                                                                                                        \
    void                                                                                                                     \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I##Code( \
            JNIEnv* env, jclass, jobject handle, jintArray subscripts, T value) {                                            \
        writeElement(env, handle, subscripts, value, true);                                                                  \
    }
LOOMKIT_WRITE_REAL(C, jchar)
LOOMKIT_WRITE_REAL(Z, jboolean)
#undef LOOMKIT_WRITE_REAL
