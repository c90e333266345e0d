#include "proxies/jnvjavaobjectrefproxy.h"

#include "jzi/jzi.h"
#include "krt/krtinstance.h"
#include "proxies/invariant.h"
#include "proxies/jprimitive.h"
#include "tether/jnicalls.h"

namespace nativevrl {

namespace {

constexpr const char* sourceName = "standalone/loomkit/nativevrl/jnvjavaobjectrefproxy";

}  // namespace

NewJNVJavaObjectRefProxy::NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array) : JNVJavaObjectRefProxy(env, nullptr) {
    stateInvariant(array != nullptr, "NULL != ptr", sourceName, __LINE__);
    const tether::JNIEnvInjector injector = tether::make_local_env_injector(env);
    wrapAndConsume(array, tether::GlobalRef<jobject>::adopting(injector, mJava2jObject(array)));
}

NewJNVJavaObjectRefProxy::NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array, krtInstance* instance)
    : JNVJavaObjectRefProxy(env, nullptr) {
    stateInvariant(array != nullptr, "NULL != ptr", sourceName, __LINE__);
    const tether::JNIEnvInjector injector = tether::make_local_env_injector(env);
    wrapAndConsume(array, tether::GlobalRef<jobject>::adopting(injector, instance->qxArrayToJavaObject(array)));
}

void NewJNVJavaObjectRefProxy::wrapAndConsume(qxArray* array, tether::GlobalRef<jobject> object) {
    if (object.get() == nullptr) {
        // An object that could not be had is not the same as none: the array stays the caller's.
        tether::throwIfPending(env());
    } else {
        const jvalue argument = objectArgument(object.get());
        construct(&argument);
    }
    qxDestroyArray(array);
    object.reset();
}

}  // namespace nativevrl
