#pragma once

#include <jni.h>

namespace vrlkrt {

/// Java classes and methods that calls of Java objects need. Global references, which stay for the process's life.
struct JavaTypes {
    jclass invoker;
    jmethodID invoke;  ///< static Object invoke(Object target, String method, Object[] arguments)
    jclass object;
    jclass string;
    jclass number;
    jmethodID doubleValue;
    jclass boxedDouble;
    jmethodID newDouble;
    jclass boxedBoolean;
    jmethodID newBoolean;
    jmethodID booleanValue;
    jclass doubleArray;
    jclass doubleArrayArray;
};

/// The types, loaded on first need; the integration class comes through the configuration's loadOJI, once. Throws
/// vrlBaseException, with no Java exception left pending, when they can't be had; the next call tries again.
const JavaTypes& javaTypes(JNIEnv* env);

}  // namespace vrlkrt
