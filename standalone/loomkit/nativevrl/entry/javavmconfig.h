#pragma once

#include "jzi/jzi.h"
#include "tether/globalref.h"

#include <boost/noncopyable.hpp>

#include <string>

namespace nativevrl {

/// Tells the runtime that it lives inside a virtual machine that runs already, and loads the runtime's integration
/// class into it by way of Java: a static method of the class JBOSSHack calls back the native that does the load.
/// Usable on any thread of the runtime.
class JavaVMConfigLoomkit : public jzi::JavaVMConfig, private boost::noncopyable {
public:
    /// Takes a copy of `hackClass`, with a global reference of its own.
    JavaVMConfigLoomkit(JavaVM* vm, const tether::GlobalRef<jclass>& hackClass);
    ~JavaVMConfigLoomkit() override;

    bool hasJavaVM() override;

    /// The integration class as a global reference of the caller. What follows "-Djava.class.path=" and
    /// "-Djava.library.path=" is passed on whole. Works once: the class reference is given up after it. Throws
    /// JavaVMConfigException with the text of a pending Java exception, and std::out_of_range for an option too
    /// short to hold its prefix.
    jclass loadOJI(const std::string& classPathOption, const std::string& libraryPathOption) override;

    JavaVM* getJavaVM() override;
    std::string getJVMLocation() override;

private:
    tether::GlobalRef<jclass> callLoadOJI(const tether::JNIEnvInjector& injector, const std::string& classPathOption,
                                          const std::string& libraryPathOption) const;

    JavaVM* javaVM_;
    tether::GlobalRef<jclass> hackClass_;
    std::string jvmLocation_;
};

}  // namespace nativevrl
