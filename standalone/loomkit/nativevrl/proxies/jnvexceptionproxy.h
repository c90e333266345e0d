#pragma once

#include "proxies/jobjectproxy.h"

namespace nativevrl {

class JNVExceptionClassProxy : public JSingletonClassProxy<JNVExceptionClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/NVException"; }

    const jmethodID constructor = method("<init>", "(Ljava/lang/String;[Ljava/lang/String;I)V");
};

using JNVExceptionProxy = JProxyOf<JNVExceptionClassProxy>;

/// A new exception with its message and the lines of the native stack; it is not thrown yet.
class NewJNVExceptionProxy : public JNVExceptionProxy {
public:
    NewJNVExceptionProxy(JNIEnv* env, jstring message, jobjectArray stack, jint stackLines);
};

}  // namespace nativevrl
