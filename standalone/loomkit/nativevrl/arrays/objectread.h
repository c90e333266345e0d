#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <cstddef>

namespace nativevrl {

/// The natives that read one element as a Java object. A wrapper of NVArray's family around a shared data copy for a
/// cell, struct or function handle, the box of its Java type for any other element. The result is a local reference.
jobject readObject(JNIEnv* env, jobject handle, jint index, bool real);
jobject readObject(JNIEnv* env, jobject handle, jintArray subscripts, bool real);

/// The element at a position of the data blocks. A null array raises java.lang.NullPointerException.
jobject elementToObject(JNIEnv* env, const qxArray* array, std::size_t dataIndex, bool real);

}  // namespace nativevrl
