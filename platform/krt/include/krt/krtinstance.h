#pragma once

#include "qx/qx.h"

#include <jni.h>

/// A component instance as the library sees it. It stays a valid object when the instance is ended, so a pointer got
/// from a handle never dangles.
class krtInstance {
public:
    virtual ~krtInstance();

    /// Wraps a Java object in an array, which takes the global reference over. Null, with the reference left to
    /// the caller, when the array can't be made.
    qxArray* javaObjectToQxArray(jobject globalReference);

    /// A new global reference to the object in such an array, the caller's to delete.
    jobject qxArrayToJavaObject(qxArray* array);

protected:
    krtInstance();
};
