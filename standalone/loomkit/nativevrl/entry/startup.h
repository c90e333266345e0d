#pragma once

#include <jni.h>

namespace nativevrl {

/// Tells the runtime of the virtual machine that it lives in, once in the life of the process. A run that ends in an
/// exception leaves the way free for the next caller.
void configureRuntimeOnce(JNIEnv* env);

}  // namespace nativevrl
