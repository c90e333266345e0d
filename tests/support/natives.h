#pragma once

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

/// A native by its name in Java; one that is overloaded by what comes behind its handle.
#define NVKRT(name) Java_com_norvane_toolbox_loomkit_internal_NVKRT_##name
#define NVKRT_OF_HANDLE(name, rest) NVKRT(name##__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2##rest)
