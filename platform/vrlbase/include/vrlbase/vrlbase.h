#pragma once

/// The base of the runtime: start and stop, options, status, the one mutex, failures.

#include "vrlbase/exceptions.h"
#include "vrlbase/library.h"
#include "vrlbase/runtime.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

/// Starts the runtime. Options: -nojvm, -nodisplay, -logfile FILE, -cachedir DIR. The strings are read during the
/// call only; a null one is skipped. Throws vrlBaseException, naming what was wrong, for an option that is
/// not known or lacks its value, and for a log file that can't be written; nothing is changed then. Starting
/// a runtime that runs takes the options over and is otherwise without effect; but no options at all, from a library
/// that has not started it yet, leave it as others started it.
void vrlInitializeApplicationImpl(const char** options, unsigned count);

/// Stops the runtime: instances are ended, options go back to their defaults. Without effect when it is not running.
/// While other libraries have it started too, only the caller's instances are ended.
void vrlTerminateApplicationImpl();

/// The one lock of the runtime. Recursive. Releasing what the thread does not hold is without effect.
void vrlAcquireMutex();
void vrlReleaseMutex();

bool vrlIsKRTInitialized();
bool vrlIsKcc();
bool vrlIsJVMEnabled();
bool vrlIsNoDisplaySet();

/// Name of the log file, "" when there is none. Owned by the runtime, which keeps it to the
/// process's end.
const char* vrlGetLogFileName();

/// Tells the runtime which virtual machine the calling library lives with. State 4: inside one that runs already.
/// False for any other state or an empty configuration. Throws std::bad_alloc.
bool vrlSetZvmState(int state, boost::shared_ptr<jzi::JavaVMConfig> config);
/// The configuration that the calling library set; empty before.
boost::shared_ptr<jzi::JavaVMConfig> vrlGetJavaVMConfig();

/// One text for each line of a stack, in its order.
std::vector<std::string> createStackStrings(const std::vector<Norvane::vrl::vrlTAVRIXStackLine>& stack);
