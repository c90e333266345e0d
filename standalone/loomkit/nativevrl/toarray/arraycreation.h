#pragma once

#include "qx/arrayowner.h"
#include "toarray/arrayinitializer.h"

#include <jni.h>

namespace nativevrl::JConvert {

/// An array that was just made, in the free scope. Null, since there is no memory for it, raises
/// java.lang.OutOfMemoryError and throws tether::OutOfMemoryException.
qxArrayOwner requireCreated(JNIEnv* env, qxArrayOwner array);

/// An array with the properties stated, its cells and fields absent: double and real where nothing is said, 0-by-0
/// without dimensions, a row for one dimension. Never null, and refused as requireCreated does.
qxArrayOwner createArrayFromProperties(JNIEnv* env, JNVArrayPropertySpecifier& specifier,
                                       qxContents contents = qxContents::zeros);

/// The array that the initializer's data and statements describe, filled; never null.
qxArrayOwner createArrayFromInitializer(JNIEnv* env, JNVArrayInitializer& initializer);

}  // namespace nativevrl::JConvert
