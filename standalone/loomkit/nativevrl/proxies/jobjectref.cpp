#include "proxies/jobjectref.h"

#include "tether/jnicalls.h"

namespace nativevrl {

jobject JObjectRef::newLocalRef(JNIEnv* env, jobject object) {
    jobject reference = env->NewLocalRef(object);
    if (reference == nullptr && env->IsSameObject(object, nullptr) == JNI_FALSE) {
        tether::throwNamedException(env, "java/lang/OutOfMemoryError");
        throw tether::NewLocalRefError();
    }
    return reference;
}

JObjectRef& JObjectRef::operator=(const JObjectRef& other) { return *this = other.ref_; }

JObjectRef& JObjectRef::operator=(jobject object) {
    attach(object == nullptr ? nullptr : newLocalRef(env_, object));
    return *this;
}

}  // namespace nativevrl
