#include "proxies/jclassproxy.h"

#include "tether/jnicalls.h"
#include "vrlbase/vrlbase.h"

#include <vector>

namespace nativevrl {

namespace {

using Registry = std::vector<std::atomic<JTetherDisposable*>*>;

/// The filled slots in the order in which their proxies came to be; guarded by JTetherLock. Left to the process's end:
/// threads of the virtual machine may still run natives while static objects go.
Registry& registry() {
    static Registry& slots = *new Registry;
    return slots;
}

jclass newWeakClassRef(JNIEnv* env, jclass cls) {
    jobject reference = env->NewWeakGlobalRef(cls);
    if (reference == nullptr && env->IsSameObject(cls, nullptr) == JNI_FALSE) {
        tether::throwNamedException(env, "java/lang/OutOfMemoryError");
        throw tether::NewWeakGlobalRefError();
    }
    return static_cast<jclass>(reference);
}

}  // namespace

JTetherDisposable::~JTetherDisposable() = default;

JTetherLock::JTetherLock() { vrlAcquireMutex(); }

JTetherLock::~JTetherLock() { vrlReleaseMutex(); }

JClassProxy::JClassProxy(JNIEnv* env, jclass cls) : classRef_(newWeakClassRef(env, cls)), env_(env) {}

JClassProxy::~JClassProxy() { env_->DeleteWeakGlobalRef(classRef_); }

void JClassProxy::dispose(JNIEnv* env) {
    env_ = env;
    delete this;
}

JObjectRef JClassProxy::getClassLoader() const {
    JObjectRef classClass(env_, nullptr);
    classClass.attach(tether::findClass(env_, "java/lang/Class"));
    jmethodID getter =
        tether::getMethodID(env_, static_cast<jclass>(classClass.ref()), "getClassLoader", "()Ljava/lang/ClassLoader;");
    JObjectRef loader(env_, nullptr);
    loader.attach(env_->CallObjectMethodA(classRef_, getter, nullptr));
    tether::throwIfPending(env_);
    return loader;
}

jmethodID JClassProxy::method(const char* name, const char* signature) const {
    return tether::getMethodID(env_, classRef_, name, signature);
}

jmethodID JClassProxy::staticMethod(const char* name, const char* signature) const {
    return tether::getStaticMethodID(env_, classRef_, name, signature);
}

JTetherDisposable* JClassProxy::build(JNIEnv* env, Slot& slot, const char* className, Factory make) {
    const JTetherLock lock;
    if (JTetherDisposable* builtByAnother = slot.load(std::memory_order_relaxed)) {
        return builtByAnother;
    }
    JObjectRef cls(env, nullptr);
    cls.attach(env->FindClass(className));
    if (cls.isNull()) {
        throw tether::FindClassException(className);
    }
    // Room first, so that a proxy that is in use can't fail to be registered.
    registry().reserve(registry().size() + 1);
    JTetherDisposable* proxy = make(env, static_cast<jclass>(cls.ref()));
    slot.store(proxy, std::memory_order_release);
    cls.reset();
    if (proxy == nullptr) {
        tether::throwOutOfMemory(env);
    }
    registry().push_back(&slot);
    return proxy;
}

void disposeClassProxies(JNIEnv* env) {
    const JTetherLock lock;
    for (auto* slot : registry()) {
        if (JTetherDisposable* proxy = slot->load(std::memory_order_relaxed)) {
            proxy->dispose(env);
            slot->store(nullptr, std::memory_order_release);
        }
    }
    registry().clear();
}

}  // namespace nativevrl
