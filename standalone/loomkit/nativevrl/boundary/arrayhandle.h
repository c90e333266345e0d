#pragma once

#include "qx/arrayowner.h"

#include <jni.h>

/// How Java holds arrays: behind a NativePtr whose long is the address. Each NativePtr that a native made owes one
/// qxDestroyArray; handles don't count references, and nothing notices a stale one. Who takes an owner here releases it
/// to the Java object that is made; a failure ends the array.
namespace nativevrl {

/// The address in a NativePtr, which is not tested for null.
qxArray* openHandle(JNIEnv* env, jobject nativePtr);

/// Takes the array, if there is one, out of the automatic scope: the last thing before it leaves for Java.
qxArray* setFreeScope(qxArray* array);

/// A new NativePtr around an array, null included, in the scope that it has: a local reference of the caller.
jobject makeHandle(JNIEnv* env, qxArrayOwner array);

/// The same in the free scope.
jobject handOver(JNIEnv* env, qxArrayOwner array);

/// The array in the free scope and in the Java wrapper class that fits it; NVBuiltinArray around 0 for null. A local
/// reference of the caller.
jobject wrap(JNIEnv* env, qxArrayOwner array);

}  // namespace nativevrl
