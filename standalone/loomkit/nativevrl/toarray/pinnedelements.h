#pragma once

#include "proxies/jprimitive.h"
#include "tether/jnicalls.h"

#include <jni.h>

namespace nativevrl::JConvert {

/// The elements of a primitive Java array, pinned for the guard's lifetime and written back when it ends. The array
/// is borrowed: unlike a proxy, the guard makes no reference of its own, since a walk has one guard a row.
template <typename T>
class PinnedElements {
    using Jni = JPrimitive<T>;

public:
    /// Throws tether::NullPointerException for null and tether::OutOfMemoryException when there is no block to be had.
    PinnedElements(JNIEnv* env, jobject array) : env_(env), array_(static_cast<typename Jni::Array>(array)) {
        if (array == nullptr) {
            tether::throwNullPointer(env);
        }
        length_ = env->GetArrayLength(array_);
        elements_ = (env->*Jni::getElements)(array_, nullptr);
        if (elements_ == nullptr) {
            tether::throwOutOfMemory(env);
        }
    }
    ~PinnedElements() { (env_->*Jni::releaseElements)(array_, elements_, 0); }
    PinnedElements(const PinnedElements&) = delete;
    PinnedElements& operator=(const PinnedElements&) = delete;

    jsize length() const noexcept { return length_; }
    const T* begin() const noexcept { return elements_; }
    const T* end() const noexcept { return elements_ + length_; }

private:
    JNIEnv* env_;
    typename Jni::Array array_;
    jsize length_ = 0;
    T* elements_ = nullptr;
};

/// The UTF-16 units of a Java string, likewise; the string is borrowed and not null.
class PinnedText {
public:
    PinnedText(JNIEnv* env, jobject string)
        : env_(env),
          string_(static_cast<jstring>(string)),
          length_(env->GetStringLength(string_)),
          units_(tether::getStringChars(env, string_)) {}
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

}  // namespace nativevrl::JConvert
