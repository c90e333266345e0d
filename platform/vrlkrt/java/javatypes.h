#pragma once

#include <jni.h>

namespace vrlkrt {

/// Java classes and methods that values of Java objects need: of the virtual machine's own, as global references, which
/// stay for the process's life.
struct JavaTypes {
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

/// The types, loaded on first need. Throws tether::Exception, with a Java exception pending, when they can't be had;
/// the next call tries again.
const JavaTypes& javaTypes(JNIEnv* env);

}  // namespace vrlkrt
