#include "entry/javavmconfig.h"

#include "proxies/jobjectproxy.h"
#include "proxies/jprimitive.h"
#include "tether/jnicalls.h"
#include "vrlkrt/jvmattach.h"

#include <cstring>
#include <stdexcept>

namespace nativevrl {

namespace {

/// What follows `prefix` in `option`. A text without the prefix is cut at one less than the prefix's length. Throws
/// std::out_of_range for one that ends before.
std::string textAfter(const std::string& option, const char* prefix) {
    const std::size_t length = std::strlen(prefix);
    const std::size_t found = option.find(prefix);
    const std::size_t begin = found == std::string::npos ? length - 1 : found + length;
    if (begin > option.size()) {
        throw std::out_of_range("invalid string position");
    }
    return option.substr(begin);
}

}  // namespace

JavaVMConfigLoomkit::JavaVMConfigLoomkit(JavaVM* vm, const tether::GlobalRef<jclass>& hackClass)
    : javaVM_(vm), hackClass_(hackClass), jvmLocation_(jvm_attach::getJVMLocation()) {}

JavaVMConfigLoomkit::~JavaVMConfigLoomkit() = default;

bool JavaVMConfigLoomkit::hasJavaVM() { return javaVM_ != nullptr; }

JavaVM* JavaVMConfigLoomkit::getJavaVM() { return javaVM_; }

std::string JavaVMConfigLoomkit::getJVMLocation() { return jvmLocation_; }

jclass JavaVMConfigLoomkit::loadOJI(const std::string& classPathOption, const std::string& libraryPathOption) {
    const tether::JNIEnvInjector injector = hackClass_.injector();
    try {
        tether::GlobalRef<jclass> loaded = callLoadOJI(injector, classPathOption, libraryPathOption);
        hackClass_.reset();
        return loaded.release();
    } catch (const tether::Exception& failure) {
        std::string text = failure.what();
        if (injector.run([](JNIEnv* env) { return env->ExceptionCheck(); }) != JNI_FALSE) {
            text += "\n";
            text += injector.run([](JNIEnv* env) { return jvm_attach::exceptionToString(env); });
        }
        throw JavaVMConfigException(text);
    }
}

tether::GlobalRef<jclass> JavaVMConfigLoomkit::callLoadOJI(const tether::JNIEnvInjector& injector,
                                                           const std::string& classPathOption,
                                                           const std::string& libraryPathOption) const {
    return injector.run([&](JNIEnv* env) {
        const std::string classPath = textAfter(classPathOption, "-Djava.class.path=");
        const std::string libraryPath = textAfter(libraryPathOption, "-Djava.library.path=");
        jmethodID method = tether::getStaticMethodID(env, hackClass_.get(), "callLoadOJI",
                                                     "(Ljava/lang/String;Ljava/lang/String;)Ljava/lang/Class;");
        const NewJStringProxy classPathString(env, classPath.c_str());
        const NewJStringProxy libraryPathString(env, libraryPath.c_str());
        const jvalue arguments[] = {objectArgument(classPathString.ref()), objectArgument(libraryPathString.ref())};
        jobject result = callStaticObjectMethod(env, hackClass_.get(), method, arguments);
        return tether::GlobalRef<jclass>::taking(injector, env, static_cast<jclass>(result));
    });
}

}  // namespace nativevrl
