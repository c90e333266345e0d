#include "tether/envinjector.h"

namespace tether {

JNIEnvInjector::detach_guard::detach_guard(const Detach& detach) : detach_(detach) {}

JNIEnvInjector::detach_guard::~detach_guard() {
    if (!detach_.empty()) {
        detach_();
    }
}

JNIEnvInjector::JNIEnvInjector(const GetEnv& getEnv, const Attach& attach, const Detach& detach)
    : getEnv_(getEnv), attach_(attach), detach_(detach) {}
JNIEnvInjector::JNIEnvInjector(const JNIEnvInjector&) = default;
JNIEnvInjector& JNIEnvInjector::operator=(const JNIEnvInjector&) = default;
JNIEnvInjector::~JNIEnvInjector() = default;

JNIEnvInjector make_local_env_injector(JNIEnv* env) {
    const auto handOut = [env](JNIEnv** target) {
        *target = env;
        return static_cast<int>(JNI_OK);
    };
    return {handOut, handOut, [] { return static_cast<int>(JNI_OK); }};
}

}  // namespace tether
