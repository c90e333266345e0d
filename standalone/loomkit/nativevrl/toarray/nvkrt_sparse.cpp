/// Natives that make a sparse matrix.

#include "toarray/creating.h"
#include "toarray/sparsecreation.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;
using namespace nativevrl::JConvert;

jobject
Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateSparseMatrix___3I_3ILjava_lang_Object_2Ljava_lang_Object_2IIIII(
    JNIEnv* env, jclass, jintArray rowIndex, jintArray colIndex, jobject realData, jobject imagData, jint rows,
    jint columns, jint nzmax, jint classId, jint complexity) {
    return creating(env, [&] {
        const SparseStatement stated{rows, columns, nzmax, static_cast<qxClassID>(classId),
                                     static_cast<qxComplexity>(complexity)};
        const JObjectProxy real(env, realData);
        const JObjectProxy imaginary(env, imagData);
        return createSparseFromJava(env, rowIndex, colIndex, real, imaginary, stated);
    });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateSparseMatrix__Ljava_lang_Object_2Ljava_lang_Object_2II(
    JNIEnv* env, jclass, jobject realData, jobject imagData, jint classId, jint complexity) {
    return creating(env, [&] {
        const JObjectProxy real(env, realData);
        const JObjectProxy imaginary(env, imagData);
        return convertToSparse(env, real, imaginary, static_cast<qxClassID>(classId),
                               static_cast<qxComplexity>(complexity));
    });
}
