#pragma once

#include <jni.h>

#include <memory>
#include <type_traits>

namespace tether {

/// Owns a local reference, of type jclass say, that a JNI call on the current thread just returned; null is fine. It
/// ends with its scope, also when an exception passes and whatever Java exception is pending.
template <typename Reference>
class LocalRef {
public:
    LocalRef(JNIEnv* env, Reference reference) noexcept : reference_(reference, End{env}) {}

    /// Borrowed.
    Reference get() const noexcept { return reference_.get(); }
    explicit operator bool() const noexcept { return reference_ != nullptr; }

    /// Gives the reference to the caller.
    [[nodiscard]] Reference release() noexcept { return reference_.release(); }

private:
    struct End {
        JNIEnv* env;
        void operator()(jobject reference) const noexcept { env->DeleteLocalRef(reference); }
    };

    std::unique_ptr<std::remove_pointer_t<Reference>, End> reference_;
};

}  // namespace tether
