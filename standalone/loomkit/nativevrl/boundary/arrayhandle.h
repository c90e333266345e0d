#pragma once

#include "qx/arrayowner.h"

#include <jni.h>

#include <cstddef>

/// How Java holds arrays: behind a NativePtr whose long is the address. Each NativePtr that a native made owes one
/// qxDestroyArray; handles don't count references, and nothing notices a stale one.
namespace nativevrl {

/// The address in a NativePtr, which is not tested for null.
qxArray* openHandle(JNIEnv* env, jobject nativePtr);

/// A new NativePtr around an array, null included: a local reference of the caller.
jobject makeHandle(JNIEnv* env, qxArray* array);

/// Takes the array, if there is one, out of the automatic scope: the last thing before it leaves for Java.
qxArray* freeForJava(qxArray* array);

/// The free scope and a new NativePtr for an array, null included, that Java owns from here on. A failure ends it.
jobject handOver(JNIEnv* env, qxArrayOwner array);

/// Class id with the slow query behind it where the class word is not final.
inline qxClassID classIdOf(const qxArray* array) {
    const std::uint32_t word = array->classWord();
    return word > qxFUNCTION_CLASS ? array->_get_class_id_non_trivial() : static_cast<qxClassID>(word);
}

/// The complex flag is set and there is an imaginary block.
inline bool isComplex(const qxArray* array) { return array->hasComplexFlag() && array->imagData() != nullptr; }

/// Block of the real or the imaginary part.
inline void* partOf(const qxArray* array, bool real) { return real ? array->realData() : array->imagData(); }

/// Raises java.lang.IllegalArgumentException when the imaginary part of a real array is asked for. The array must
/// not be null with `real` false.
void checkImaginaryAccess(JNIEnv* env, const qxArray* array, bool real);

/// Elements that the data blocks hold: 0 for an empty array, the stored ones of a sparse array.
std::size_t storedElementCount(const qxArray* array);

}  // namespace nativevrl
