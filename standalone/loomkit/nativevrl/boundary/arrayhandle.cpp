#include "boundary/arrayhandle.h"

#include "boundary/boundary.h"
#include "proxies/jnativeptrproxy.h"

namespace nativevrl {

qxArray* openHandle(JNIEnv* env, jobject nativePtr) {
    return static_cast<qxArray*>(JNativePtrProxy(env, nativePtr).address());
}

jobject makeHandle(JNIEnv* env, qxArray* array) { return NewJNativePtrProxy(env, array).detach(); }

qxArray* freeForJava(qxArray* array) {
    if (array != nullptr) {
        qxSetArrayScope(array, qxFREE_SCOPE);
    }
    return array;
}

jobject handOver(JNIEnv* env, qxArrayOwner array) {
    jobject handle = makeHandle(env, freeForJava(array.get()));
    static_cast<void>(array.release());  // Java has it now
    return handle;
}

void checkImaginaryAccess(JNIEnv* env, const qxArray* array, bool real) {
    if (!real && !isComplex(array)) {
        raise<tether::IllegalArgumentException>(env, "java/lang/IllegalArgumentException",
                                                "Can not get imaginary part of real array");
    }
}

std::size_t storedElementCount(const qxArray* array) {
    if (qxIsEmpty(array)) {
        return 0;
    }
    return array->isSparse() ? array->columnStartTable()[qxGetN(array)] : qxGetNumberOfElements(array);
}

}  // namespace nativevrl
