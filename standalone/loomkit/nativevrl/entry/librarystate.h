#pragma once

#include "tether/envinjector.h"

#include <jni.h>
#include <boost/shared_ptr.hpp>
#include <mutex>

/// What outlives a call, besides the class proxies. Written at load, emptied at unload, only read in between. None of
/// it ends with the process: threads of the virtual machine may still run natives while static objects go.
namespace nativevrl {

/// Empty while the library is not loaded.
extern boost::shared_ptr<tether::JNIEnvInjector>& sharedEnvInjector;
extern JavaVM* sharedJavaVM;
/// Lets the first configuration of the runtime finish once.
extern std::once_flag krtStartupOnce;

}  // namespace nativevrl
