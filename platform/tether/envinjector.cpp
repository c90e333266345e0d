#include "tether/envinjector.h"

#include <boost/make_shared.hpp>

namespace tether {

JNIEnvInjector::detach_guard::detach_guard(const Detach& detach) : detach_(detach) {}

JNIEnvInjector::detach_guard::~detach_guard() {
    if (!detach_.empty()) {
        detach_();
    }
}

JNIEnvInjector::JNIEnvInjector(const GetEnv& getEnv, const Attach& attach, const Detach& detach)
    : functions_(boost::make_shared<const Functions>(Functions{getEnv, attach, detach})) {}
JNIEnvInjector::~JNIEnvInjector() = default;

JNIEnvInjector make_local_env_injector(JNIEnv* env) {
    const auto handOut = [env](JNIEnv** target) {
        *target = env;
        return static_cast<int>(JNI_OK);
    };
    return {handOut, handOut, [] { return static_cast<int>(JNI_OK); }};
}

}  // namespace tether
