/// Natives that give an array as nested Java arrays of wrapper objects.

#include "tojava/wholearray.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

#define LOOMKIT_BOXED_READ(Name, T)                                                       \
    jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxArrayTo##Name##ObjectArray( \
        JNIEnv* env, jclass, jobject handle, jboolean real) {                             \
        return nestedRead<BoxedLeaf<T>>(env, handle, real);                               \
    }

LOOMKIT_BOXED_READ(Boolean, jboolean)
LOOMKIT_BOXED_READ(Byte, jbyte)
LOOMKIT_BOXED_READ(Character, jchar)
LOOMKIT_BOXED_READ(Double, jdouble)
LOOMKIT_BOXED_READ(Float, jfloat)
LOOMKIT_BOXED_READ(Integer, jint)
LOOMKIT_BOXED_READ(Long, jlong)
LOOMKIT_BOXED_READ(Short, jshort)

#undef LOOMKIT_BOXED_READ
