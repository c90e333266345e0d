#include "proxies/jnativeptrproxy.h"

#include "proxies/jprimitive.h"

#include <cstdint>
#include <string>

namespace nativevrl {

jlong JNativePtrProxy::get() const { return tether::callMethodA<jlong>(env(), ref(), cls().get, nullptr); }

void* JNativePtrProxy::address() const { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(get())); }

NewJNativePtrProxy::NewJNativePtrProxy(JNIEnv* env, void* address) : JNativePtrProxy(env, nullptr) {
    const jvalue argument = asArgument(static_cast<jlong>(reinterpret_cast<std::uintptr_t>(address)));
    construct(&argument);
}

const char* nativePtrConstructorSignature() {
    static const std::string& signature =
        *new std::string(std::string("(L") + JNativePtrClassProxy::className() + ";)V");
    return signature.c_str();
}

const char* nativePtrGetterSignature() {
    static const std::string& signature =
        *new std::string(std::string("()L") + JNativePtrClassProxy::className() + ";");
    return signature.c_str();
}

}  // namespace nativevrl
