#pragma once

#include "proxies/jobjectarrayproxy.h"
#include "qx/qx.h"
#include "toarray/javakind.h"

#include <jni.h>

/// The pure-Java cell and struct values, which become native ones element by element.
namespace nativevrl::JConvert {

class JNVArrayInitializer;

/// Adds the field names of a pure-Java struct value, borrowed, to the properties of the array to be made.
void gatherFieldNamesOfStruct(JNVArrayInitializer& initializer, jobject object);

/// Converts each value on its own and stores it in the slot of its position, which the array then owns. Values for
/// which there is no slot are converted and dropped. An NVBuiltinArray among the values raises
/// java.lang.RuntimeException.
void fillCompoundArray(JavaKindReader& kindOf, const JObjectArrayProxy<JObjectProxy>& flatArray, qxArray* array);

/// Fills a cell or struct array from the pure-Java value that `object` must be: java.lang.NullPointerException for
/// null, java.lang.ClassCastException for any other object.
void fillCellFromJava(JavaKindReader& kindOf, jobject object, qxArray* array);
void fillStructFromJava(JavaKindReader& kindOf, jobject object, qxArray* array);

}  // namespace nativevrl::JConvert
