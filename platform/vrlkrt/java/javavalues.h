#pragma once

#include "krt/value.hpp"
#include "qx/qx.h"
#include "vrlkrt/java/javatypes.h"

#include <jni.h>

namespace vrlkrt {

/// An array as a Java value, a local reference: Double, Boolean or String for a single value, double[] for a row or
/// column, double[][] by rows for a matrix, Object[] for a cell array, null for 0-by-0, and a wrapped object as itself.
/// Throws krt::Error that names the value when there is no such form, tether::Exception with a Java exception pending.
jobject javaValueOf(JNIEnv* env, const JavaTypes& types, const krt::Value& value);

/// A Java value as an array: a double or logical scalar, a char row, a row, a matrix, 0-by-0 for null, and a wrapped
/// object for anything else. Throws vrlBaseException for a double[][] with rows of different lengths, std::bad_alloc,
/// tether::Exception with a Java exception pending.
qxArray* arrayOf(JNIEnv* env, const JavaTypes& types, jobject value);

}  // namespace vrlkrt
