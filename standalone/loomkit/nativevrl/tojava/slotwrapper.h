#pragma once

#include "proxies/jnvarrayproxy.h"
#include "qx/arrayowner.h"

#include <jni.h>

/// What Java gets for the element pointers of cell and struct arrays and function handles. It never gets an inner
/// element itself: it gets a shared data copy, and owes that one a destroy.
namespace nativevrl {

/// A shared data copy of the array in a slot, or a new real 0-by-0 double array for a null slot, in its Java wrapper
/// class: a local reference of the caller.
jobject wrapSlot(JNIEnv* env, const qxArray* slot);

}  // namespace nativevrl
