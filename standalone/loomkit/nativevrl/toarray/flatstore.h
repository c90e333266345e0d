#pragma once

#include "proxies/jobjectproxy.h"
#include "qx/qx.h"

#include <jni.h>

namespace nativevrl::JConvert {

/// Copies a one-dimensional Java source into the real or the imaginary block of a numeric, logical or char array, in
/// storage order: as many elements as both have, the rest of the block staying as it is. A sparse array takes them into
/// its tables of values, up to their capacity. The block must exist; where the accessor of an element edits the array,
/// the elements after it go into the block that the array has then.
///
/// A numeric array takes byte, short, int, long, float and double arrays, with plain casts, and object arrays of
/// numbers; a logical array takes boolean[] and Boolean objects; a char array takes char[], String and Character
/// objects. Throws tether::Exception with java.lang.IllegalArgumentException pending for another source of a numeric
/// array, java.lang.UnsupportedOperationException for an array without elements of its own, and
/// java.lang.NullPointerException for null. Logical and char arrays pass other sources over in silence.
void setPartData(JNIEnv* env, qxArray* array, const JObjectProxy& source, bool real);

}  // namespace nativevrl::JConvert
