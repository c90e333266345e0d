#include "proxies/jsystemproxies.h"

#include "tether/jnicalls.h"

namespace nativevrl {

JListIteratorClassProxy::JListIteratorClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      hasNext(method("hasNext", "()Z")),
      next(method("next", "()Ljava/lang/Object;")),
      set(method("set", "(Ljava/lang/Object;)V")) {}

JListIteratorProxy::JListIteratorProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), iteratorClass_(JListIteratorClassProxy::instance(env)) {}
JListIteratorProxy::JListIteratorProxy(const JListIteratorProxy& other) = default;
JListIteratorProxy::~JListIteratorProxy() = default;

bool JListIteratorProxy::hasNext() const {
    return tether::callMethodA<jboolean>(env(), ref(), iteratorClass_->hasNext, nullptr) != JNI_FALSE;
}

JObjectProxy JListIteratorProxy::next() const {
    JObjectProxy element(env(), nullptr);
    element.attach(callObject(iteratorClass_->next));
    return element;
}

void JListIteratorProxy::set(jobject value) const {
    jvalue argument;
    argument.l = value;
    tether::callMethodA<void>(env(), ref(), iteratorClass_->set, &argument);
}

JInputStreamsClassProxy::JInputStreamsClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls), read(method("read", "([B)I")) {}

JInputStreamProxy::JInputStreamProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), streamClass_(JInputStreamsClassProxy::instance(env)) {}
JInputStreamProxy::JInputStreamProxy(const JInputStreamProxy& other) = default;
JInputStreamProxy::~JInputStreamProxy() = default;

jint JInputStreamProxy::read(jbyteArray target) const {
    jvalue argument;
    argument.l = target;
    return tether::callMethodA<jint>(env(), ref(), streamClass_->read, &argument);
}

}  // namespace nativevrl
