#pragma once

/// How the runtime hooks into a virtual machine that runs already.

#include "tether/envinjector.h"
#include "tether/globalref.h"

#include <jni.h>

#include <string>

namespace jvm_attach {

/// Folder of the virtual machine's library; "" when none is loaded. Throws tether::OutOfMemoryException.
std::string getJVMLocation();

/// Loads the class through which components call Java objects. The last argument is a class loader, or null for
/// the one of the caller. Throws tether::Exception with a Java exception pending.
tether::GlobalRef<jclass> loadOJI(JNIEnv* env, const tether::JNIEnvInjector& injector, const std::string& classPath,
                                  const std::string& libraryPath, jobject classLoader);

/// Text of the pending Java exception, its stack included, which stays pending; "" when none is. Its class alone, or
/// "out of memory", when there is no room for more. Throws nothing.
std::string exceptionToString(JNIEnv* env);

}  // namespace jvm_attach
