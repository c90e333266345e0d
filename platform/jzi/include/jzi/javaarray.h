#pragma once

/// Arrays that wrap Java objects, and the way to an environment for those who handle them.

#include "jzi/jzi.h"

#include <jni.h>

namespace jzi {

/// Kind of an opaque array that wraps a Java object.
constexpr const char* javaObjectSubclass = "java_object";

/// An array over a Java object. It takes the global reference over (null is fine) and deletes it with the last header,
/// on whatever thread that is. Null, with the reference left to the caller, when there is no virtual machine or no
/// memory.
qxArray* makeJavaArray(jobject globalReference);

/// The global reference that such an array holds: borrowed, good as long as the array. Null for any other array.
jobject heldJavaObject(const qxArray* array);

/// The virtual machine that the runtime was told of; null before.
JavaVM* javaVM();

/// A JNIEnv for the current thread for as long as this lives: an unknown thread is attached for that long.
class ThreadEnv {
public:
    explicit ThreadEnv(JavaVM* vm);
    ~ThreadEnv();
    ThreadEnv(const ThreadEnv&) = delete;
    ThreadEnv& operator=(const ThreadEnv&) = delete;

    /// Null when there is no virtual machine, or it is gone.
    JNIEnv* get() const noexcept { return env_; }

private:
    JavaVM* vm_;
    JNIEnv* env_ = nullptr;
    bool attachedHere_ = false;
};

/// The environment of a thread that the virtual machine knows; null on any other. Never attaches.
JNIEnv* knownThreadEnv();

}  // namespace jzi
