#include "proxies/jobjectproxy.h"

#include "tether/jnicalls.h"

namespace nativevrl {

JObjectClassProxy::JObjectClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      toString(method("toString", "()Ljava/lang/String;")),
      getClass(method("getClass", "()Ljava/lang/Class;")) {}

JClassClassProxy::JClassClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls), getName(method("getName", "()Ljava/lang/String;")) {}

JObjectProxy::JObjectProxy(JNIEnv* env, jobject object)
    : JObjectRef(env, object), objectClass_(JObjectClassProxy::instance(env)) {}
JObjectProxy::JObjectProxy(const JObjectProxy& other) = default;
JObjectProxy::~JObjectProxy() = default;

JStringProxy JObjectProxy::getClassName() const {
    JStringProxy name(env(), nullptr);
    if (isNull()) {
        name.attach(tether::newStringUTF(env(), "null"));
        return name;
    }
    JObjectRef cls(env(), nullptr);
    cls.attach(callObject(objectClass_->getClass));
    name.attach(callObjectMethod(env(), cls.ref(), JClassClassProxy::instance(env())->getName));
    return name;
}

JStringProxy JObjectProxy::toString() const {
    JStringProxy text(env(), nullptr);
    text.attach(callObject(objectClass_->toString));
    return text;
}

jobject JObjectProxy::callObject(jmethodID method) const { return callObjectMethod(env(), ref(), method); }

jobject callObjectMethod(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments) {
    jobject result = env->CallObjectMethodA(object, method, arguments);
    if (env->ExceptionCheck() != JNI_FALSE) {
        throw tether::Exception();
    }
    return result;
}

JClassRef::JClassRef(JNIEnv* env, const char* name) : JObjectRef(env, tether::findClass(env, name)) {}
JClassRef::JClassRef(const JClassRef& other) = default;
JClassRef::~JClassRef() = default;

}  // namespace nativevrl
