#pragma once

#include "tether/localref.h"

#include <jni.h>

#include <utility>

/// Ownership of references, once and for all: a local reference lives in a proxy from the line that made it.
/// Constructing or assigning a proxy from a reference makes a new local reference, so the one given stays its
/// owner's ("borrowed"); adopt takes over what JNI just returned, and so does attach for a proxy that is there
/// already; moving hands the reference on; detach gives the proxy's own to the caller, and stands in a return
/// statement only. A proxy belongs to the thread and the native call that built it.
///
///     jobject firstOf(JNIEnv* env, jobjectArray rows) {
///         auto row = adopt<JObjectProxy>(env, env->GetObjectArrayElement(rows, 0));
///         return row.isNull() ? nullptr : row.detach();
///     }
namespace nativevrl {

/// Root of all object proxies: owns one local reference, or none. What it does is inline, since walks over large arrays
/// have a reference for each row or element.
class JObjectRef {
public:
    /// A private reference to `object`, which may be null. Throws tether::NewLocalRefError when there is none to be
    /// had.
    JObjectRef(JNIEnv* env, jobject object) : env_(env), ref_(object == nullptr ? nullptr : newLocalRef(env, object)) {}
    JObjectRef(const JObjectRef& other) : JObjectRef(other.env_, other.ref_) {}
    /// Takes the reference of `other`, which then refers to nothing.
    JObjectRef(JObjectRef&& other) noexcept : env_(other.env_), ref_(other.release()) {}
    JObjectRef& operator=(const JObjectRef& other);
    JObjectRef& operator=(JObjectRef&& other) noexcept {
        if (this != &other) {
            attach(other.detach());
        }
        return *this;
    }
    JObjectRef& operator=(jobject object);

    virtual ~JObjectRef() { JObjectRef::reset(); }
    /// Deletes the reference.
    virtual void reset() {
        if (ref_ != nullptr) {
            env_->DeleteLocalRef(release());
        }
    }
    /// Gives the reference to the caller.
    [[nodiscard]] virtual jobject detach() { return release(); }
    /// Takes over a local reference that JNI just returned; the old one is deleted.
    virtual void attach(jobject object) {
        reset();
        ref_ = object;
    }

    JNIEnv* env() const noexcept { return env_; }
    /// The reference, borrowed.
    jobject ref() const noexcept { return ref_; }
    bool isNull() const noexcept { return ref_ == nullptr; }

protected:
    /// Forgets the reference without deleting it.
    jobject release() noexcept { return std::exchange(ref_, nullptr); }

private:
    static jobject newLocalRef(JNIEnv* env, jobject object);

    JNIEnv* env_;
    jobject ref_ = nullptr;
};

/// A proxy that takes over a local reference that JNI just returned, null included. For a proxy of a class, which may
/// have to be looked up, no Java exception may be pending.
template <typename Proxy = JObjectRef>
Proxy adopt(JNIEnv* env, jobject local) {
    // Building the proxy may look up its class and fail.
    tether::LocalRef<jobject> reference(env, local);
    Proxy proxy(env, nullptr);
    proxy.attach(reference.release());
    return proxy;
}

}  // namespace nativevrl
