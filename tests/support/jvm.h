#pragma once

#include <jni.h>

#include <cstddef>
#include <functional>

/// The one virtual machine of the test program. It lives from main to the end of the process, with -Xcheck:jni on and
/// the Java half on its class path; the natives that Java calls are the ones linked into this program.
namespace nativevrl::test {

JavaVM* javaVm();

/// The environment of the calling thread; null on one that the virtual machine doesn't know.
JNIEnv* currentEnv();

/// Runs `body` on a new thread that is attached for the time, and waits for its end. An exception that leaves the
/// body ends the program.
void onAttachedThread(const std::function<void(JNIEnv*)>& body);

/// The same on a thread with a stack of so many bytes.
void onSmallStack(std::size_t bytes, const std::function<void(JNIEnv*)>& body);

/// Runs `body` on a new thread that the virtual machine doesn't know, and waits for its end.
void onUnknownThread(const std::function<void()>& body);

}  // namespace nativevrl::test
