/// The entry points that a virtual machine calls by itself; they pass on to the library's own.

#include "entry/onload.h"
#include "vrlkrt/unload.h"

#include <jni.h>

JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void*) {
    return JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(vm);
}

JNIEXPORT void JNICALL JNI_OnUnload(JavaVM* vm, void*) {
    vrlForgetLibrary(reinterpret_cast<const void*>(&JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload));
    JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload(vm);
}
