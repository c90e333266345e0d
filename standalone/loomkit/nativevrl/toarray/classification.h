#pragma once

#include "qx/qx.h"
#include "toarray/javakind.h"

#include <jni.h>

namespace nativevrl::JConvert {

/// The class of array that a Java object asks for, 0 if none fits. The first element decides for the whole of an
/// object array, its declared class for an empty one. A null counts as an instance of every class and gives char.
/// `allowCompound` lets the pure-Java struct and cell values count; as elements of an object array they never do.
qxClassID classifyJavaObject(JavaKindReader& kindOf, jobject object, bool allowCompound);

}  // namespace nativevrl::JConvert
