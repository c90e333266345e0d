#include "proxies/jstringproxy.h"

#include "proxies/javalength.h"

namespace nativevrl {

const char* JStringProxy::getStringUTFChars() {
    if (utfChars_ == nullptr && !isNull()) {
        utfChars_ = tether::getStringUTFChars(env(), static_cast<jstring>(ref()));
    }
    return utfChars_;
}

const jchar* JStringProxy::getStringChars() {
    if (chars_ == nullptr && !isNull()) {
        chars_ = tether::getStringChars(env(), static_cast<jstring>(ref()));
    }
    return chars_;
}

jsize JStringProxy::length() const { return isNull() ? 0 : env()->GetStringLength(static_cast<jstring>(ref())); }

NewJStringProxy::NewJStringProxy(JNIEnv* env, const char* text) : NewJStringProxy(env) {
    attach(tether::newStringUTF(env, text));
}

NewJStringProxy::NewJStringProxy(JNIEnv* env, const jchar* begin, const jchar* end) : NewJStringProxy(env) {
    attach(tether::newString(env, begin, javaLength(env, static_cast<std::size_t>(end - begin))));
}

void NewJStringProxy::attachUnits(const std::basic_string<char16_t>& units) {
    static_assert(sizeof(char16_t) == sizeof(jchar));
    attach(tether::newString(env(), reinterpret_cast<const jchar*>(units.data()), javaLength(env(), units.size())));
}

}  // namespace nativevrl
