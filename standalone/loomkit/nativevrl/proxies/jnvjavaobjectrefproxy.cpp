#include "proxies/jnvjavaobjectrefproxy.h"

#include "jzi/jzi.h"
#include "krt/krtinstance.h"
#include "proxies/invariant.h"
#include "proxies/jprimitive.h"
#include "qx/arrayowner.h"
#include "tether/envinjector.h"
#include "tether/jnicalls.h"

namespace nativevrl {

namespace {

constexpr const char* sourceName = "standalone/loomkit/nativevrl/jnvjavaobjectrefproxy";

/// Deletes a global reference through an injector when it goes.
class GlobalReferenceEnd {
public:
    GlobalReferenceEnd(const tether::JNIEnvInjector& injector, jobject reference)
        : injector_(injector), reference_(reference) {}
    ~GlobalReferenceEnd() {
        if (reference_ != nullptr) {
            injector_.run([this](JNIEnv* env) { env->DeleteGlobalRef(reference_); });
        }
    }
    GlobalReferenceEnd(const GlobalReferenceEnd&) = delete;
    GlobalReferenceEnd& operator=(const GlobalReferenceEnd&) = delete;

private:
    tether::JNIEnvInjector injector_;
    jobject reference_;
};

}  // namespace

NewJNVJavaObjectRefProxy::NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array) : JNVJavaObjectRefProxy(env, nullptr) {
    stateInvariant(array != nullptr, "NULL != ptr", sourceName, __LINE__);
    wrapAndConsume(array, mJava2jObject(array));
}

NewJNVJavaObjectRefProxy::NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array, krtInstance* instance)
    : JNVJavaObjectRefProxy(env, nullptr) {
    stateInvariant(array != nullptr, "NULL != ptr", sourceName, __LINE__);
    wrapAndConsume(array, instance->qxArrayToJavaObject(array));
}

void NewJNVJavaObjectRefProxy::wrapAndConsume(qxArray* array, jobject object) {
    const GlobalReferenceEnd end(tether::make_local_env_injector(env()), object);
    if (object == nullptr) {
        // An object that could not be had is not the same as none: the array stays the caller's.
        tether::throwIfPending(env());
    } else {
        const jvalue argument = objectArgument(object);
        construct(&argument);
    }
    qxDestroyArray(array);
}

}  // namespace nativevrl
