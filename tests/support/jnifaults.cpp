#include "support/jnifaults.h"

namespace nativevrl::test {

JniFaults::JniFaults(JNIEnv* env, int n) : JniProbe(env), remaining_(0), error_(nullptr) {
    const JNINativeInterface_& jni = *machine();
    jclass cls = jni.FindClass(env, "java/lang/OutOfMemoryError");
    jobject error = jni.NewObjectA(env, cls, jni.GetMethodID(env, cls, "<init>", "()V"), nullptr);
    error_ = static_cast<jthrowable>(jni.NewGlobalRef(env, error));
    jni.DeleteLocalRef(env, error);
    jni.DeleteLocalRef(env, cls);
    remaining_ = n;
}

JniFaults::~JniFaults() { machine()->DeleteGlobalRef(env(), error_); }

bool JniFaults::admits(const JniFunction& function) {
    const bool chosen = only_ ? function.slot == *only_ : function.failure != JniFailure::never;
    if (!chosen || remaining_ <= 0 || --remaining_ > 0) {
        return true;
    }
    if (function.failure == JniFailure::throws && machine()->ExceptionCheck(env()) == JNI_FALSE) {
        machine()->Throw(env(), error_);
    }
    return false;
}

}  // namespace nativevrl::test
