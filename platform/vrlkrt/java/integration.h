#pragma once

#include "tether/localref.h"
#include "vrlbase/library.h"

#include <jni.h>

namespace vrlkrt {

/// The binding's class that calls methods of Java objects, as one class loader has it.
struct Integration {
    tether::LocalRef<jclass> invoker;
    jmethodID invoke;  ///< static Object invoke(Object target, String method, Object[] arguments)
};

/// That of the class loader which `library` is loaded by; where the library gave no configuration, one of any other.
/// Loaded on first need, through the configuration's loadOJI, once. It is held weakly: it goes with its class loader.
/// Throws vrlBaseException, with no Java exception left pending, when it can't be had; the next call tries again.
Integration integrationOf(JNIEnv* env, vrlLibrary library);

/// Loads it ahead, since until then a configuration holds on to its class loader. On a thread of the virtual machine;
/// without effect on any other, or when it can't be had.
void prepareIntegration(vrlLibrary library) noexcept;

/// Forgets that of a library which is about to be unloaded.
void forgetIntegration(vrlLibrary library) noexcept;

}  // namespace vrlkrt
