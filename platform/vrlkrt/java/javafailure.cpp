#include "vrlkrt/java/javafailure.h"

#include "vrlkrt/jvmattach.h"

namespace vrlkrt {

std::string takeJavaException(JNIEnv* env) {
    std::string text = jvm_attach::exceptionToString(env);
    env->ExceptionClear();
    return text.substr(0, text.find("\n\tat "));
}

}  // namespace vrlkrt
