#pragma once

#include "tether/jnicalls.h"

#include <jni.h>

namespace nativevrl {

/// The subscripts of one native call, in Java's array: pinned at first need, and released, written back, in the end.
/// The array is borrowed from the call: unlike a proxy this makes no reference of its own, which would take as long as
/// reaching the element.
class JavaSubscripts {
public:
    JavaSubscripts(JNIEnv* env, jintArray array) noexcept : env_(env), array_(array) {}
    ~JavaSubscripts() {
        if (elements_ != nullptr) {
            env_->ReleaseIntArrayElements(array_, elements_, 0);
        }
    }
    JavaSubscripts(const JavaSubscripts&) = delete;
    JavaSubscripts& operator=(const JavaSubscripts&) = delete;

    JNIEnv* env() const noexcept { return env_; }

    /// 0 for null.
    jsize length() const { return array_ == nullptr ? 0 : env_->GetArrayLength(array_); }

    /// Throws tether::NullPointerException for null and tether::OutOfMemoryException when they can't be had.
    const jint* elements() {
        if (elements_ == nullptr) {
            pin();
        }
        return elements_;
    }

private:
    void pin() {
        if (array_ == nullptr) {
            tether::throwNullPointer(env_);
        }
        elements_ = env_->GetIntArrayElements(array_, nullptr);
        if (elements_ == nullptr) {
            tether::throwOutOfMemory(env_);
        }
    }

    JNIEnv* env_;
    jintArray array_;
    jint* elements_ = nullptr;
};

}  // namespace nativevrl
