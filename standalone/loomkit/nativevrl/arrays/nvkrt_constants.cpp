/// Natives that tell Java how the array library counts its classes, and its numeric constants. None can fail.

#include "qx/qx.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#define LOOMKIT_CONSTANT(name, T, value) \
    T Java_com_norvane_toolbox_loomkit_internal_NVKRT_##name(JNIEnv*, jclass) { return value; }
LOOMKIT_CONSTANT(qxGetUnknownClassID, jint, qxUNKNOWN_CLASS)
LOOMKIT_CONSTANT(qxGetCellClassID, jint, qxCELL_CLASS)
LOOMKIT_CONSTANT(qxGetStructClassID, jint, qxSTRUCT_CLASS)
LOOMKIT_CONSTANT(qxGetLogicalClassID, jint, qxLOGICAL_CLASS)
LOOMKIT_CONSTANT(qxGetCharClassID, jint, qxCHAR_CLASS)
LOOMKIT_CONSTANT(qxGetDoubleClassID, jint, qxDOUBLE_CLASS)
LOOMKIT_CONSTANT(qxGetSingleClassID, jint, qxSINGLE_CLASS)
LOOMKIT_CONSTANT(qxGetInt8ClassID, jint, qxINT8_CLASS)
LOOMKIT_CONSTANT(qxGetUint8ClassID, jint, qxUINT8_CLASS)
LOOMKIT_CONSTANT(qxGetInt16ClassID, jint, qxINT16_CLASS)
LOOMKIT_CONSTANT(qxGetUint16ClassID, jint, qxUINT16_CLASS)
LOOMKIT_CONSTANT(qxGetInt32ClassID, jint, qxINT32_CLASS)
LOOMKIT_CONSTANT(qxGetUint32ClassID, jint, qxUINT32_CLASS)
LOOMKIT_CONSTANT(qxGetInt64ClassID, jint, qxINT64_CLASS)
LOOMKIT_CONSTANT(qxGetUint64ClassID, jint, qxUINT64_CLASS)
LOOMKIT_CONSTANT(qxGetFunctionClassID, jint, qxFUNCTION_CLASS)
LOOMKIT_CONSTANT(qxGetOpaqueClassID, jint, qxOPAQUE_CLASS)
LOOMKIT_CONSTANT(qxGetObjectClassID, jint, qxOBJECT_CLASS)
LOOMKIT_CONSTANT(qxGetRealID, jint, qxREAL)
LOOMKIT_CONSTANT(qxGetComplexID, jint, qxCOMPLEX)
LOOMKIT_CONSTANT(qxGetEps, jdouble, qxGetEps())
LOOMKIT_CONSTANT(qxGetInf, jdouble, qxGetInf())
LOOMKIT_CONSTANT(qxGetNaN, jdouble, qxGetNaN())
#undef LOOMKIT_CONSTANT

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsFinite(JNIEnv*, jclass, jdouble value) {
    return qxIsFinite(value) ? JNI_TRUE : JNI_FALSE;
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsInf(JNIEnv*, jclass, jdouble value) {
    return qxIsInf(value) ? JNI_TRUE : JNI_FALSE;
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsNaN(JNIEnv*, jclass, jdouble value) {
    return qxIsNaN(value) ? JNI_TRUE : JNI_FALSE;
}
