#include "proxies/jobjectproxy.h"

#include "tether/jnicalls.h"

namespace nativevrl {

JStringProxy JObjectProxy::getClassName() const {
    if (isNull()) {
        return adopt<JStringProxy>(env(), tether::newStringUTF(env(), "null"));
    }
    const auto ofObject = call<JObjectRef>(cls().getClass);
    return adopt<JStringProxy>(env(),
                               callObjectMethod(env(), ofObject.ref(), JClassClassProxy::instance(env())->getName));
}

JStringProxy JObjectProxy::toString() const { return call<JStringProxy>(cls().toString); }

jobject callObjectMethod(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments) {
    jobject result = env->CallObjectMethodA(object, method, arguments);
    tether::throwIfPending(env);
    return result;
}

jobject callStaticObjectMethod(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments) {
    jobject result = env->CallStaticObjectMethodA(cls, method, arguments);
    tether::throwIfPending(env);
    return result;
}

JClassRef::JClassRef(JNIEnv* env, const char* name) : JObjectRef(env, tether::findClass(env, name)) {}

}  // namespace nativevrl
