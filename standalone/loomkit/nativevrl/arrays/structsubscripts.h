#pragma once

#include "proxies/jstringproxy.h"
#include "proxies/pinnedelements.h"
#include "qx/qx.h"

namespace nativevrl {

/// Position in the slots of a struct array, where the fields of one element lie next to one another, of one field of
/// one element. Fields, subscripts and indices count from 1 here, the result from 0. Each form raises the Java
/// exception of the check that fails, and throws std::overflow_error for a product beyond 32 bits.

/// The field number comes first, then one subscript per dimension of the array.
unsigned structSubscript(JNIEnv* env, const qxArray* array, PinnedElements<jint>& fieldAndSubscripts);

/// By the name of the field.
unsigned structSubscript(JNIEnv* env, const qxArray* array, JStringProxy& field, PinnedElements<jint>& subscripts);

/// By the name of the field and the element's index in column-major order.
unsigned structSubscript(JNIEnv* env, const qxArray* array, JStringProxy& field, jint index);

}  // namespace nativevrl
