#pragma once

#include "proxies/jclassproxy.h"
#include "proxies/numericcast.h"
#include "tether/jnicalls.h"

#include <cstddef>
#include <string>
#include <utility>

namespace nativevrl {

class JStringClassProxy : public JSingletonClassProxy<JStringClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/lang/String"; }
};

/// A Java string with its characters, fetched at first need and held until reset. Both forms may be held at once.
class JStringProxy : public JObjectRef {
public:
    using ClassProxy = JStringClassProxy;

    JStringProxy(JNIEnv* env, jobject string) : JObjectRef(env, string) {}
    /// Refers to the same string; characters are not shared.
    JStringProxy(const JStringProxy& other) : JObjectRef(other) {}
    /// Takes the characters along.
    JStringProxy(JStringProxy&& other) noexcept
        : JObjectRef(std::move(other)),
          utfChars_(std::exchange(other.utfChars_, nullptr)),
          chars_(std::exchange(other.chars_, nullptr)) {}
    JStringProxy& operator=(const JStringProxy& other) {
        JObjectRef::operator=(other);
        return *this;
    }
    /// The characters are given back on the way.
    JStringProxy& operator=(JStringProxy&& other) noexcept {
        JObjectRef::operator=(std::move(other));
        return *this;
    }
    ~JStringProxy() override { releaseChars(); }

    void reset() override {
        releaseChars();
        JObjectRef::reset();
    }

    /// Characters that were fetched end here, since nobody could give them back without the reference.
    [[nodiscard]] jobject detach() override {
        releaseChars();
        return JObjectRef::detach();
    }

    /// Modified UTF-8, NUL-terminated; null for a null string. Valid until reset.
    const char* getStringUTFChars();
    /// UTF-16 units, not terminated; null for a null string. Valid until reset.
    const jchar* getStringChars();
    /// Number of UTF-16 units; 0 for a null string.
    jsize length() const;

    /// Gives both forms of the characters back.
    void releaseChars() {
        if (utfChars_ != nullptr) {
            env()->ReleaseStringUTFChars(static_cast<jstring>(ref()), std::exchange(utfChars_, nullptr));
        }
        if (chars_ != nullptr) {
            env()->ReleaseStringChars(static_cast<jstring>(ref()), std::exchange(chars_, nullptr));
        }
    }

private:
    const char* utfChars_ = nullptr;
    const jchar* chars_ = nullptr;
};

/// A new Java string.
class NewJStringProxy : public JStringProxy {
public:
    /// From modified UTF-8.
    NewJStringProxy(JNIEnv* env, const char* text);
    /// From UTF-16 units, handed over without a copy in between.
    NewJStringProxy(JNIEnv* env, const jchar* begin, const jchar* end);

    /// From elements, each cast to a UTF-16 unit.
    template <typename S>
    NewJStringProxy(JNIEnv* env, const S* begin, const S* end) : NewJStringProxy(env, begin, 1, end, 1) {}

    /// From every stride-th element; `end` is a whole number of strides behind `begin`.
    template <typename S>
    NewJStringProxy(JNIEnv* env, const S* begin, std::size_t stride, const S* end, std::size_t)
        : JStringProxy(env, nullptr) {
        std::basic_string<char16_t> units;
        units.reserve(static_cast<std::size_t>(end - begin) / stride);
        for (; begin != end; begin += stride) {
            units.push_back(castElement<char16_t>(*begin));
        }
        attachUnits(units);
    }

    /// From a range of values, each cast to a UTF-16 unit.
    template <typename Iterator>
    static NewJStringProxy fromRange(JNIEnv* env, Iterator begin, Iterator end) {
        NewJStringProxy string(env);
        std::basic_string<char16_t> units;
        for (; begin != end; ++begin) {
            units.push_back(castElement<char16_t>(*begin));
        }
        string.attachUnits(units);
        return string;
    }

private:
    explicit NewJStringProxy(JNIEnv* env) : JStringProxy(env, nullptr) {}
    void attachUnits(const std::basic_string<char16_t>& units);
};

}  // namespace nativevrl
