#pragma once

#include "proxies/javalength.h"
#include "proxies/jstringproxy.h"
#include "tether/jnicalls.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

namespace nativevrl {

/// Row that is one string: an element is a UTF-16 unit, zero units among them. The class name has no "L" and ";", so
/// strings stand in arrays of one level only: an array of more dimensions than two fails in the class look-up.
class StringLeaf {
public:
    using Element = jchar;
    static const char* className() { return JStringClassProxy::className(); }

    StringLeaf(JNIEnv* env, std::size_t length) : env_(env), length_(length), string_(env, nullptr) {
        javaLength(env, length);
    }

    /// Units that come all at once go to Java without a copy in between.
    void write(std::size_t at, const jchar* begin, std::size_t count) {
        if (count == length_) {
            string_.attach(NewJStringProxy(env_, begin, begin + count).detach());
            return;
        }
        if (!units_) {
            units_.reset(new (std::nothrow) jchar[length_]);
            if (!units_) {
                tether::throwOutOfMemory(env_);
            }
        }
        std::copy(begin, begin + count, units_.get() + at);
    }

    [[nodiscard]] jobject detach() {
        if (units_) {
            string_.attach(NewJStringProxy(env_, units_.get(), units_.get() + length_).detach());
        }
        return string_.detach();
    }

private:
    JNIEnv* env_;
    std::size_t length_;
    std::unique_ptr<jchar[]> units_;
    JObjectRef string_;
};

}  // namespace nativevrl
