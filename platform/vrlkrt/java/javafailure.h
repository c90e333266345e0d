#pragma once

#include <jni.h>

#include <string>

namespace vrlkrt {

/// Class and message of the pending Java exception, which is cleared; "" when none is. Without its stack, which would
/// grow with each call that goes from Java to a component and back.
std::string takeJavaException(JNIEnv* env);

}  // namespace vrlkrt
