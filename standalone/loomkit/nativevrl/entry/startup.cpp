#include "entry/startup.h"

#include "entry/javavmconfig.h"
#include "entry/librarystate.h"
#include "tether/jnicalls.h"
#include "vrlbase/vrlbase.h"

#include <boost/make_shared.hpp>

#include <mutex>

namespace nativevrl {

namespace {

/// State of the runtime that knows its virtual machine.
constexpr int machineKnown = 4;

void configureRuntime(JNIEnv* env) {
    try {
        const auto hackClass = tether::GlobalRef<jclass>::taking(
            *sharedEnvInjector, env, tether::findClass(env, "com/norvane/toolbox/loomkit/internal/JBOSSHack"));
        vrlSetZvmState(machineKnown, boost::make_shared<JavaVMConfigLoomkit>(sharedJavaVM, hackClass));
    } catch (const tether::OutOfMemoryException&) {
        tether::throwOutOfMemory(env);
    }
}

}  // namespace

void configureRuntimeOnce(JNIEnv* env) {
    std::call_once(krtStartupOnce, [env] { configureRuntime(env); });
}

}  // namespace nativevrl
