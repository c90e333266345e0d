#pragma once

#include "tether/envinjector.h"
#include "tether/jnicalls.h"

#include <exception>
#include <utility>

namespace tether {

/// A global reference to `object`, made through the injector. Null for null. When it can't be had,
/// java.lang.OutOfMemoryError is raised and NewGlobalRefError thrown.
template <typename T>
T newGlobalRef(const JNIEnvInjector& injector, T object) {
    return injector.run([object](JNIEnv* env) {
        auto reference = static_cast<T>(env->NewGlobalRef(object));
        if (reference == nullptr && env->IsSameObject(object, nullptr) == JNI_FALSE) {
            throwNamedException(env, "java/lang/OutOfMemoryError");
            throw NewGlobalRefError();
        }
        return reference;
    });
}

/// An injector and a global reference. Every copy owns a reference of its own, so copies may end in any order
/// and on any thread.
template <typename T>
class GlobalRef {
public:
    /// Takes over a local reference of the current thread: a global one is made and the local one deleted, also
    /// when there is no global one to be had.
    GlobalRef(const JNIEnvInjector& injector, JNIEnv* env, T local)
        : GlobalRef(injector, local, LocalEnd{env, local}) {}

    /// Refers to an object that the caller keeps its own reference to.
    GlobalRef(const JNIEnvInjector& injector, T borrowed)
        : injector_(injector), reference_(newGlobalRef(injector, borrowed)) {}

    GlobalRef(const GlobalRef& other)
        : injector_(other.injector_),
          reference_(other.reference_ == nullptr ? nullptr : newGlobalRef(other.injector_, other.reference_)) {}

    GlobalRef& operator=(GlobalRef other) noexcept {
        swap(other);
        return *this;
    }

    /// A thread that can't be attached any more leaves the reference to the virtual machine's end.
    ~GlobalRef() {
        try {
            deleteThrough(injector_);
        } catch (const std::exception&) {
            return;
        }
    }

    T get() const noexcept { return reference_; }
    const JNIEnvInjector& injector() const noexcept { return injector_; }

    /// Gives the global reference to the caller.
    [[nodiscard]] T release() noexcept { return std::exchange(reference_, nullptr); }

    /// Deletes the global reference, attaching the thread for it if need be. When it throws, the reference is still
    /// there.
    void reset() {
        if (reference_ != nullptr) {
            const JNIEnvInjector injector = injector_;
            deleteThrough(injector);
        }
    }

private:
    struct LocalEnd {
        ~LocalEnd() { env->DeleteLocalRef(local); }
        JNIEnv* env;
        T local;
    };

    GlobalRef(const JNIEnvInjector& injector, T local, const LocalEnd&) : GlobalRef(injector, local) {}

    void deleteThrough(const JNIEnvInjector& injector) {
        if (reference_ != nullptr) {
            injector.run([this](JNIEnv* env) { env->DeleteGlobalRef(release()); });
        }
    }

    void swap(GlobalRef& other) noexcept {
        std::swap(injector_, other.injector_);
        std::swap(reference_, other.reference_);
    }

    JNIEnvInjector injector_;
    T reference_;
};

}  // namespace tether
