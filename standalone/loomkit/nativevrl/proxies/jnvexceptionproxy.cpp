#include "proxies/jnvexceptionproxy.h"

#include "proxies/jprimitive.h"

namespace nativevrl {

NewJNVExceptionProxy::NewJNVExceptionProxy(JNIEnv* env, jstring message, jobjectArray stack, jint stackLines)
    : JNVExceptionProxy(env, nullptr) {
    const jvalue arguments[] = {objectArgument(message), objectArgument(stack), asArgument(stackLines)};
    construct(arguments);
}

}  // namespace nativevrl
