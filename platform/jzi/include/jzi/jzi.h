#pragma once

/// What the runtime knows of Java: the virtual machine that it lives with, and arrays that wrap Java objects.

#include "qx/qx.h"

#include <jni.h>

#include <stdexcept>
#include <string>

namespace jzi {

/// How the runtime reaches the virtual machine.
class JavaVMConfig {
public:
    JavaVMConfig();
    virtual ~JavaVMConfig();
    virtual bool hasJavaVM() = 0;
    /// Loads the integration class; the result is a global reference of the caller. The arguments are option
    /// texts of the form -Djava.class.path=… and -Djava.library.path=…. Throws JavaVMConfigException.
    virtual jclass loadOJI(const std::string& classPathOption, const std::string& libraryPathOption) = 0;
    virtual JavaVM* getJavaVM() = 0;
    virtual std::string getJVMLocation() = 0;
};

}  // namespace jzi

class JavaVMConfigException : public std::runtime_error {
public:
    explicit JavaVMConfigException(const std::string& message);
    JavaVMConfigException(const JavaVMConfigException&) = default;
    JavaVMConfigException& operator=(const JavaVMConfigException&) = default;
    ~JavaVMConfigException() override;
};

/// Whether an array (null is fine) wraps a Java object.
bool ojIsJavaArray(const qxArray* array);

/// A new global reference to the Java object in an array, the caller's to delete; null when it holds none. When there
/// is no reference to be had, java.lang.OutOfMemoryError is raised, and the result is null or a tether::Exception.
jobject mJava2jObject(const qxArray* array);
