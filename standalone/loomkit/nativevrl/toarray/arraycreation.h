#pragma once

#include "qx/qx.h"
#include "toarray/arrayinitializer.h"

#include <jni.h>

namespace nativevrl::JConvert {

/// An array with the properties stated, its cells and fields absent: double and real where nothing is said, 0-by-0
/// without dimensions, a row for one dimension. Free-standing, the caller's to end, never null: a refused creation
/// raises java.lang.OutOfMemoryError and throws tether::OutOfMemoryException.
qxArray* createArrayFromProperties(JNIEnv* env, JNVArrayPropertySpecifier& specifier,
                                   qxContents contents = qxContents::zeros);

/// The array that the initializer's data and statements describe, filled; the caller's to end.
qxArray* createArrayFromInitializer(JNIEnv* env, JNVArrayInitializer& initializer);

}  // namespace nativevrl::JConvert
