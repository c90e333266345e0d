#pragma once

#include <jni.h>

/// Entry points of the library's own, called by the loader: a virtual machine doesn't call them by itself.
extern "C" {

/// Makes the library ready for native calls. Always 0x10004, JNI version 1.4.
JNIEXPORT jint JNICALL JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(JavaVM* vm);

/// Disposes of the class proxies. No native call may be running.
JNIEXPORT void JNICALL JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload(JavaVM* vm);

/// Version number and build date of the library.
extern JNIEXPORT const char* const nativevrl_version;
extern JNIEXPORT const char* const nativevrl_build_date;
}
