#include "proxies/jarrayproxy.h"

namespace nativevrl {

JArrayProxy::JArrayProxy(JNIEnv* env, jobject array) : JObjectRef(env, array) {}
JArrayProxy::JArrayProxy(const JArrayProxy& other) = default;
JArrayProxy::~JArrayProxy() = default;

jsize JArrayProxy::length() const { return isNull() ? 0 : env()->GetArrayLength(static_cast<jarray>(ref())); }

}  // namespace nativevrl
