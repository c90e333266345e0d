#pragma once

#include <jni.h>

/// Java threads have small stacks, and running out of one inside native code ends the process. So every recursion over
/// a caller's data asks here before it goes one level down.
namespace nativevrl {

/// Raises java.lang.StackOverflowError and throws tether::Exception unless the calling thread's stack has room for one
/// more level of a recursion: some KB of frames, and the JNI calls made in them. A thread whose stack the system
/// doesn't tell of has none.
void requireStack(JNIEnv* env);

}  // namespace nativevrl
