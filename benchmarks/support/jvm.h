#pragma once

#include <jni.h>

namespace nativevrl::bench {

/// Starts the one virtual machine of the program, without any checks, and returns the environment of the calling
/// thread; null when it doesn't start, which it has said why.
JNIEnv* startJvm();

}  // namespace nativevrl::bench
