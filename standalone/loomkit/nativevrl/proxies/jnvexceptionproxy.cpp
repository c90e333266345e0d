#include "proxies/jnvexceptionproxy.h"

#include "tether/jnicalls.h"

namespace nativevrl {

JNVExceptionClassProxy::JNVExceptionClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls), constructor(method("<init>", "(Ljava/lang/String;[Ljava/lang/String;I)V")) {}

JNVExceptionProxy::JNVExceptionProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), exceptionClass_(JNVExceptionClassProxy::instance(env)) {}
JNVExceptionProxy::JNVExceptionProxy(const JNVExceptionProxy& other) = default;
JNVExceptionProxy::~JNVExceptionProxy() = default;

NewJNVExceptionProxy::NewJNVExceptionProxy(JNIEnv* env, jstring message, jobjectArray stack, jint stackLines)
    : JNVExceptionProxy(env, nullptr) {
    jvalue arguments[3];
    arguments[0].l = message;
    arguments[1].l = stack;
    arguments[2].i = stackLines;
    attach(tether::newObjectA(env, exceptionClass()->classRef(), exceptionClass()->constructor, arguments));
}

NewJNVExceptionProxy::~NewJNVExceptionProxy() = default;

}  // namespace nativevrl
