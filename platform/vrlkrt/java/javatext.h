#pragma once

#include <jni.h>

#include <string>

namespace vrlkrt {

/// The characters of a Java string, not null, as modified UTF-8. Throws tether::Exception when they can't be had.
std::string utf8Of(JNIEnv* env, jstring string);

}  // namespace vrlkrt
