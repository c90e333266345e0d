#pragma once

#include "proxies/jprimitive.h"
#include "tether/jnicalls.h"

#include <jni.h>

#include <utility>

namespace nativevrl {

/// The elements of a primitive Java array: pinned at first need, held across other JNI calls, and released in the end,
/// written back, also when they were only read. The array is borrowed: unlike a proxy this makes no reference of its
/// own, which would take as long as reading a short row.
template <typename T>
class PinnedElements {
    using Jni = JPrimitive<T>;

public:
    PinnedElements(JNIEnv* env, jobject array) noexcept : env_(env), array_(static_cast<typename Jni::Array>(array)) {}
    PinnedElements(PinnedElements&& other) noexcept
        : env_(other.env_), array_(other.array_), elements_(std::exchange(other.elements_, nullptr)) {}
    PinnedElements& operator=(PinnedElements&& other) noexcept {
        std::swap(env_, other.env_);
        std::swap(array_, other.array_);
        std::swap(elements_, other.elements_);
        return *this;
    }
    ~PinnedElements() { release(); }

    JNIEnv* env() const noexcept { return env_; }

    bool isPinned() const noexcept { return elements_ != nullptr; }

    /// 0 for null.
    jsize length() const { return array_ == nullptr ? 0 : env_->GetArrayLength(array_); }

    /// Throws tether::NullPointerException for null and tether::OutOfMemoryException when they can't be had.
    T* elements() const {
        if (elements_ == nullptr) {
            pin();
        }
        return elements_;
    }
    const T* begin() const { return elements(); }
    const T* end() const { return elements() + length(); }

    void release() noexcept {
        if (elements_ != nullptr) {
            (env_->*Jni::releaseElements)(array_, std::exchange(elements_, nullptr), 0);
        }
    }

private:
    void pin() const {
        if (array_ == nullptr) {
            tether::throwNullPointer(env_);
        }
        elements_ = (env_->*Jni::getElements)(array_, nullptr);
        if (elements_ == nullptr) {
            tether::throwOutOfMemory(env_);
        }
    }

    JNIEnv* env_;
    typename Jni::Array array_;
    mutable T* elements_ = nullptr;  ///< null while not pinned
};

/// The UTF-16 units of a Java string for the guard's lifetime; the string is borrowed and not null.
class PinnedText {
public:
    PinnedText(JNIEnv* env, jobject string)
        : env_(env),
          string_(static_cast<jstring>(string)),
          length_(env->GetStringLength(string_)),
          units_(env->GetStringChars(string_, nullptr)) {
        if (units_ == nullptr) {
            tether::throwOutOfMemory(env);
        }
    }
    ~PinnedText() { env_->ReleaseStringChars(string_, units_); }
    PinnedText(const PinnedText&) = delete;
    PinnedText& operator=(const PinnedText&) = delete;

    jsize length() const noexcept { return length_; }
    const jchar* begin() const noexcept { return units_; }

private:
    JNIEnv* env_;
    jstring string_;
    jsize length_;
    const jchar* units_;
};

}  // namespace nativevrl
