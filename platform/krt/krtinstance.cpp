#include "krt/krtinstance.h"

#include "jzi/javaarray.h"

krtInstance::krtInstance() = default;
krtInstance::~krtInstance() = default;

qxArray* krtInstance::javaObjectToQxArray(jobject globalReference) { return jzi::makeJavaArray(globalReference); }

jobject krtInstance::qxArrayToJavaObject(qxArray* array) { return mJava2jObject(array); }
