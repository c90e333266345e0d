/// Natives that give an array as Java arrays of a primitive type, nested to its depth or flat in storage order.

#include "tojava/wholearray.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

#define LOOMKIT_PRIMITIVE_READS(Name, T)                                                                            \
    jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxArrayTo##Name##Array(JNIEnv* env, jclass,             \
                                                                                   jobject handle, jboolean real) { \
        return nestedRead<PrimitiveLeaf<T>>(env, handle, real);                                                     \
    }                                                                                                               \
    T##Array Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##Data(JNIEnv* env, jclass, jobject handle, \
                                                                               jboolean real) {                     \
        return static_cast<T##Array>(flatRead<PrimitiveLeaf<T>>(env, handle, real));                                \
    }

LOOMKIT_PRIMITIVE_READS(Boolean, jboolean)
LOOMKIT_PRIMITIVE_READS(Byte, jbyte)
LOOMKIT_PRIMITIVE_READS(Short, jshort)
LOOMKIT_PRIMITIVE_READS(Int, jint)
LOOMKIT_PRIMITIVE_READS(Long, jlong)
LOOMKIT_PRIMITIVE_READS(Float, jfloat)
LOOMKIT_PRIMITIVE_READS(Double, jdouble)
LOOMKIT_PRIMITIVE_READS(Char, jchar)

#undef LOOMKIT_PRIMITIVE_READS
