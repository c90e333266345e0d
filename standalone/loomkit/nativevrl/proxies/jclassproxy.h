#pragma once

#include "proxies/jobjectref.h"

#include <atomic>
#include <new>

namespace nativevrl {

/// Root of what teardown disposes of.
class JTetherDisposable {
public:
    virtual ~JTetherDisposable();
    virtual void dispose(JNIEnv* env) = 0;
};

/// Holds the runtime's one mutex for its lifetime.
class JTetherLock {
public:
    JTetherLock();
    virtual ~JTetherLock();
    JTetherLock(const JTetherLock&) = delete;
    JTetherLock& operator=(const JTetherLock&) = delete;
};

/// What the library keeps of one Java class for the life of the process: a weak global reference and, in the
/// concrete proxies, the method ids. Immutable once built, so readers need no lock. The weak reference is
/// never promoted nor tested: the classes stay loaded as long as the library does.
class JClassProxy : public JTetherDisposable {
public:
    JClassProxy(JNIEnv* env, jclass cls);
    ~JClassProxy() override;
    JClassProxy(const JClassProxy&) = delete;
    JClassProxy& operator=(const JClassProxy&) = delete;

    /// Ends the proxy on the environment of the disposing thread.
    void dispose(JNIEnv* env) override;

    jclass classRef() const noexcept { return classRef_; }
    bool isInstance(JNIEnv* env, jobject object) const { return env->IsInstanceOf(object, classRef_) != JNI_FALSE; }

    /// The class loader of the class; null for the classes of the virtual machine itself.
    JObjectRef getClassLoader(JNIEnv* env) const;

protected:
    /// Ids of the class, for the constructors of concrete proxies.
    jmethodID method(const char* name, const char* signature) const;
    jmethodID staticMethod(const char* name, const char* signature) const;

    using Slot = std::atomic<JTetherDisposable*>;
    using Factory = JTetherDisposable* (*)(JNIEnv*, jclass);

    /// Fills the slot once, under the lock, and registers it for teardown.
    static JTetherDisposable* build(JNIEnv* env, Slot& slot, const char* className, Factory make);

private:
    jclass classRef_;
    /// That of the thread that builds the proxy or disposes of it, and of no use in between.
    JNIEnv* env_;
};

/// Adds the singleton to a concrete class proxy, which names its class in `static const char* className()`.
template <typename Concrete>
class JSingletonClassProxy : public JClassProxy {
public:
    using JClassProxy::JClassProxy;

    /// The one proxy of the class, built at first use; never null. Throws tether::FindClassException, with the
    /// Java exception pending, while the class is not to be found.
    static Concrete* instance(JNIEnv* env) {
        JTetherDisposable* proxy = slot_.load(std::memory_order_acquire);
        if (proxy == nullptr) {
            proxy = build(env, slot_, Concrete::className(), [](JNIEnv* e, jclass cls) -> JTetherDisposable* {
                return new (std::nothrow) Concrete(e, cls);
            });
        }
        return static_cast<Concrete*>(proxy);
    }

private:
    inline static Slot slot_{nullptr};
};

/// Ends every class proxy and leaves the slots empty. No native call may be running.
void disposeClassProxies(JNIEnv* env);

}  // namespace nativevrl
