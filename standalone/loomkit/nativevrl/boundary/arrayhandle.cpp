#include "boundary/arrayhandle.h"

#include "proxies/jnativeptrproxy.h"
#include "proxies/jnvarrayproxy.h"

namespace nativevrl {

qxArray* openHandle(JNIEnv* env, jobject nativePtr) {
    return static_cast<qxArray*>(JNativePtrProxy(env, nativePtr).address());
}

qxArray* setFreeScope(qxArray* array) {
    if (array != nullptr) {
        qxSetArrayScope(array, qxFREE_SCOPE);
    }
    return array;
}

jobject makeHandle(JNIEnv* env, qxArrayOwner array) {
    NewJNativePtrProxy handle(env, array.get());
    static_cast<void>(array.release());  // Java has it now
    return handle.detach();
}

jobject handOver(JNIEnv* env, qxArrayOwner array) {
    setFreeScope(array.get());
    return makeHandle(env, std::move(array));
}

jobject wrap(JNIEnv* env, qxArrayOwner array) {
    NewJNVArrayProxy wrapper(env, setFreeScope(array.get()));
    static_cast<void>(array.release());  // the wrapper has it now, or its object was all that counted
    return wrapper.detach();
}

}  // namespace nativevrl
