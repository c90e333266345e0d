#pragma once

#include "qx/arrayowner.h"

#include <jni.h>

#include <cstddef>

/// The element pointers of cell and struct arrays and function handles. Java never gets an inner element itself: it
/// gets a wrapper that owns a shared data copy of it.
namespace nativevrl {

/// A shared data copy of the array in a slot, or a new real 0-by-0 double array where there is none, in the free
/// scope. Null when memory runs out.
qxArrayOwner shareSlot(const qxArray* array, std::size_t slot);

/// The same in its Java wrapper class: a local reference of the caller.
jobject wrapSlot(JNIEnv* env, const qxArray* array, std::size_t slot);

/// An index from 0 that must name a slot: of a struct or object array one of the elements' fields, of any other an
/// element. Raises java.lang.ArrayIndexOutOfBoundsException as checkLinearIndex does.
void checkSlot(JNIEnv* env, const qxArray* array, jint index);

}  // namespace nativevrl
