#include "proxies/jobjectref.h"

#include "tether/jnicalls.h"

#include <utility>

namespace nativevrl {

namespace {

jobject newLocalRef(JNIEnv* env, jobject object) {
    if (object == nullptr) {
        return nullptr;
    }
    jobject reference = env->NewLocalRef(object);
    if (reference == nullptr && env->IsSameObject(object, nullptr) == JNI_FALSE) {
        tether::throwNamedException(env, "java/lang/OutOfMemoryError");
        throw tether::NewLocalRefError();
    }
    return reference;
}

}  // namespace

JObjectRef::JObjectRef(JNIEnv* env, jobject object) : env_(env), ref_(newLocalRef(env, object)) {}

JObjectRef::JObjectRef(const JObjectRef& other) : JObjectRef(other.env_, other.ref_) {}

JObjectRef& JObjectRef::operator=(const JObjectRef& other) { return *this = other.ref_; }

JObjectRef& JObjectRef::operator=(jobject object) {
    attach(newLocalRef(env_, object));
    return *this;
}

JObjectRef::~JObjectRef() { JObjectRef::reset(); }

void JObjectRef::reset() {
    if (ref_ != nullptr) {
        env_->DeleteLocalRef(release());
    }
}

jobject JObjectRef::detach() { return release(); }

void JObjectRef::attach(jobject object) {
    reset();
    ref_ = object;
}

jobject JObjectRef::release() noexcept { return std::exchange(ref_, nullptr); }

}  // namespace nativevrl
