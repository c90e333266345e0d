#pragma once

#include "tether/envinjector.h"
#include "tether/jnicalls.h"
#include "tether/localref.h"

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
    static GlobalRef taking(const JNIEnvInjector& injector, JNIEnv* env, T local) {
        const LocalRef<T> end(env, local);
        return of(injector, local);
    }

    /// Refers to an object that the caller keeps its own reference to.
    static GlobalRef of(const JNIEnvInjector& injector, T borrowed) {
        return adopting(injector, newGlobalRef(injector, borrowed));
    }

    /// Takes over a global reference.
    static GlobalRef adopting(const JNIEnvInjector& injector, T global) noexcept { return {injector, global}; }

    GlobalRef(const GlobalRef& other)
        : injector_(other.injector_),
          reference_(other.reference_ == nullptr ? nullptr : newGlobalRef(other.injector_, other.reference_)) {}
    GlobalRef(GlobalRef&& other) noexcept : injector_(other.injector_), reference_(other.release()) {}

    GlobalRef& operator=(GlobalRef other) noexcept {
        swap(other);
        return *this;
    }

    /// A thread that can't be attached any more leaves the reference to the virtual machine's end.
    ~GlobalRef() {
        try {
            reset();
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
            injector_.run([this](JNIEnv* env) { env->DeleteGlobalRef(release()); });
        }
    }

private:
    GlobalRef(const JNIEnvInjector& injector, T global) noexcept : injector_(injector), reference_(global) {}

    void swap(GlobalRef& other) noexcept {
        std::swap(injector_, other.injector_);
        std::swap(reference_, other.reference_);
    }

    JNIEnvInjector injector_;
    T reference_;
};

}  // namespace tether
