#include "proxies/jsystemproxies.h"

#include "proxies/jprimitive.h"

namespace nativevrl {

bool JListIteratorProxy::hasNext() const {
    return tether::callMethodA<jboolean>(env(), ref(), cls().hasNext, nullptr) != JNI_FALSE;
}

JObjectProxy JListIteratorProxy::next() const { return call(cls().next); }

void JListIteratorProxy::set(jobject value) const {
    const jvalue argument = objectArgument(value);
    tether::callMethodA<void>(env(), ref(), cls().set, &argument);
}

jint JInputStreamProxy::read(jbyteArray target) const {
    const jvalue argument = objectArgument(target);
    return tether::callMethodA<jint>(env(), ref(), cls().read, &argument);
}

}  // namespace nativevrl
