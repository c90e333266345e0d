#pragma once

#include "qx/qx.h"

#include <jni.h>

namespace nativevrl {

/// For every stored element in storage order its subscript, from 1, along one dimension, which counts from 0: a new
/// int[] that the caller gets as a local reference. Empty for a null array, for a dimension that the array hasn't,
/// and where nothing is stored. The dimension one past the last is let through as a trailing one: all ones in a dense
/// array, the columns in a sparse one. A value beyond Java raises NVException.
jintArray subscriptRun(JNIEnv* env, const qxArray* array, jint dimension);

}  // namespace nativevrl
