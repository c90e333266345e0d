#pragma once

#include <jni.h>

#include <string>

namespace vrlkrt {

/// Text of the pending Java exception, which is cleared; "" when none is.
std::string takeJavaException(JNIEnv* env);

}  // namespace vrlkrt
