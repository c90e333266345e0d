#include "vrlkrt/java/javatext.h"

#include "tether/jnicalls.h"

#include <memory>

namespace vrlkrt {

std::string utf8Of(JNIEnv* env, jstring string) {
    const auto release = [env, string](const char* characters) { env->ReleaseStringUTFChars(string, characters); };
    const std::unique_ptr<const char, decltype(release)> characters(tether::getStringUTFChars(env, string), release);
    return characters.get();
}

}  // namespace vrlkrt
