#include "entry/javavmconfig.h"

#include "entry/librarystate.h"
#include "proxies/jobjectref.h"
#include "proxies/jstringproxy.h"
#include "tether/jnicalls.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/jvmattach.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <cstring>
#include <stdexcept>

namespace nativevrl {

namespace {

/// What follows `prefix` in `option`. A text without the prefix is cut at one less than the prefix's length, since
/// the position "not found" wraps around. Throws std::out_of_range for one that ends before.
std::string textAfter(const std::string& option, const char* prefix) {
    const std::size_t begin = option.find(prefix, 0) + std::strlen(prefix);
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
        jvalue arguments[2];
        arguments[0].l = classPathString.ref();
        arguments[1].l = libraryPathString.ref();
        jobject result = env->CallStaticObjectMethodA(hackClass_.get(), method, arguments);
        tether::throwIfPending(env);
        return tether::GlobalRef<jclass>(injector, env, static_cast<jclass>(result));
    });
}

namespace {

void configureRuntime(JNIEnv* env) {
    jclass found = tether::findClass(env, "com/norvane/toolbox/loomkit/internal/JBOSSHack");
    // The global reference takes the local one over and deletes it.
    const tether::GlobalRef<jclass> hackClass(*sharedEnvInjector, env, found);
    vrlSetZvmState(4, boost::make_shared<JavaVMConfigLoomkit>(sharedJavaVM, hackClass));
}

}  // namespace

void configureRuntimeOnce(JNIEnv* env) {
    std::call_once(krtStartupOnce, [env] { configureRuntime(env); });
}

}  // namespace nativevrl
