#pragma once

#include <jni.h>

#include <functional>

namespace nativevrl::test {

/// Two threads ask for one thing at once: the calling thread is held in its first FindClass until the other one, which
/// is attached for it, is about to ask as well. Gives how many classes the other thread looked up.
int raceInFindClass(JNIEnv* env, const std::function<void(JNIEnv*)>& ask);

}  // namespace nativevrl::test
