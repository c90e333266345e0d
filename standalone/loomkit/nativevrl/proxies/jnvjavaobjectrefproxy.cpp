#include "proxies/jnvjavaobjectrefproxy.h"

#include "jzi/jzi.h"
#include "krt/krtinstance.h"
#include "proxies/invariant.h"
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

JNVJavaObjectRefClassProxy::JNVJavaObjectRefClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      constructor(method("<init>", "(Ljava/lang/Object;)V")),
      get(method("get", "()Ljava/lang/Object;")) {}

JNVJavaObjectRefProxy::JNVJavaObjectRefProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), javaObjectRefClass_(JNVJavaObjectRefClassProxy::instance(env)) {}
JNVJavaObjectRefProxy::JNVJavaObjectRefProxy(const JNVJavaObjectRefProxy& other) = default;
JNVJavaObjectRefProxy::~JNVJavaObjectRefProxy() = default;

JObjectProxy JNVJavaObjectRefProxy::get() const {
    JObjectProxy object(env(), nullptr);
    object.attach(callObject(javaObjectRefClass_->get));
    return object;
}

NewJNVJavaObjectRefProxy::NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array) : JNVJavaObjectRefProxy(env, nullptr) {
    stateInvariant(array != nullptr, "NULL != ptr", sourceName, __LINE__);
    wrapAndConsume(array, mJava2jObject(array));
}

NewJNVJavaObjectRefProxy::NewJNVJavaObjectRefProxy(JNIEnv* env, qxArray* array, krtInstance* instance)
    : JNVJavaObjectRefProxy(env, nullptr) {
    stateInvariant(array != nullptr, "NULL != ptr", sourceName, __LINE__);
    wrapAndConsume(array, instance->qxArrayToJavaObject(array));
}

NewJNVJavaObjectRefProxy::~NewJNVJavaObjectRefProxy() = default;

void NewJNVJavaObjectRefProxy::wrapAndConsume(qxArray* array, jobject object) {
    const GlobalReferenceEnd end(tether::make_local_env_injector(env()), object);
    if (object == nullptr) {
        // An object that could not be had is not the same as none: the array stays the caller's.
        tether::throwIfPending(env());
    } else {
        jvalue argument;
        argument.l = object;
        attach(
            tether::newObjectA(env(), javaObjectRefClass()->classRef(), javaObjectRefClass()->constructor, &argument));
    }
    qxDestroyArray(array);
}

}  // namespace nativevrl
