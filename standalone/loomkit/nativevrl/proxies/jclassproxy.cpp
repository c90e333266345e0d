#include "proxies/jclassproxy.h"

#include "tether/jnicalls.h"
#include "vrlbase/vrlbase.h"

#include <memory>
#include <vector>

namespace nativevrl {

namespace {

using Registry = std::vector<std::atomic<JTetherDisposable*>*>;

/// The filled slots in the order in which their proxies came to be; guarded by JTetherLock. Left to the process's end:
/// threads of the virtual machine may still run natives while static objects go.
Registry& registry() {
    static Registry& slots = []() -> Registry& {
        auto* made = new Registry;
        made->reserve(64);  // more than there are class proxies
        return *made;
    }();
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

JObjectRef JClassProxy::getClassLoader(JNIEnv* env) const {
    const auto classClass = adopt(env, tether::findClass(env, "java/lang/Class"));
    jmethodID getter =
        tether::getMethodID(env, static_cast<jclass>(classClass.ref()), "getClassLoader", "()Ljava/lang/ClassLoader;");
    jobject loader = env->CallObjectMethodA(classRef_, getter, nullptr);
    tether::throwIfPending(env);
    return adopt(env, loader);
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
    auto cls = adopt(env, env->FindClass(className));
    if (cls.isNull()) {
        throw tether::FindClassException(className);
    }
    std::unique_ptr<JTetherDisposable> proxy(make(env, static_cast<jclass>(cls.ref())));
    cls.reset();
    if (proxy == nullptr) {
        tether::throwOutOfMemory(env);
    }
    // Looking up the class may have run code of a class loader, which may have come here on this thread.
    if (JTetherDisposable* builtMeanwhile = slot.load(std::memory_order_relaxed)) {
        return builtMeanwhile;
    }
    registry().push_back(&slot);
    slot.store(proxy.get(), std::memory_order_release);
    return proxy.release();
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
