#pragma once

#include "proxies/jobjectproxy.h"
#include "qx/arrayowner.h"
#include "toarray/javakind.h"

#include <jni.h>

/// From a Java object to a native array: the way in for evaluation arguments, cell elements and the natives that take
/// Java data. Class, complexity and dimensions come from the data unless they are stated. Nested Java arrays are taken
/// level by level, a[i][j] being row i and column j; ragged ones fill the box that bounds them, with zeros in the
/// holes. Each result is free-standing and never null.
///
/// All throw tether::Exception with a Java exception pending: java.lang.RuntimeException for an object that no class
/// fits, java.lang.OutOfMemoryError when there is no array to be had, and what Java code that was called threw.
/// Extents whose product exceeds 32 bits throw std::overflow_error.
namespace nativevrl::JConvert {

/// An array as the object alone decides it. One reader serves all the objects of a call, and all that is within them.
qxArrayOwner convertObject(JavaKindReader& kindOf, const JObjectProxy& real);

/// An array of a stated class (0 leaves it to the data) and complexity. Without qxCOMPLEX the imaginary object is
/// disregarded, its shape too. An NVBuiltinArray as `real` gives a shared copy, or a converted one for another class.
qxArrayOwner convertObjectPair(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary, qxClassID classId,
                               qxComplexity complexity);

/// The same with stated dimensions, one per nesting level. Data beyond them is cut off; an NVBuiltinArray must have
/// just these, and the stated complexity.
qxArrayOwner convertObjectPairWithDimensions(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary,
                                             jintArray dimensions, qxClassID classId, qxComplexity complexity);

}  // namespace nativevrl::JConvert
