#pragma once

#include "support/javadata.h"
#include "support/jnicounter.h"
#include "support/jnifaults.h"
#include "support/jvm.h"

#include <gtest/gtest.h>
#include <jni.h>

#include <cstddef>
#include <string>

namespace nativevrl::test {

/// A test on the main thread with a local frame of its own. It fails when it leaves a Java exception pending, a native
/// array alive or one too few, or a probe of the function table installed.
class JvmTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    JNIEnv* env = nullptr;

private:
    std::size_t arraysBefore_ = 0;
};

/// Expects exactly this class (in slash form) to be pending with exactly this message (modified UTF-8; null for an
/// exception without one), and clears it. The failure points at the calling line.
void expectThrown(JNIEnv* env, const char* className, const char* message, const char* file = __builtin_FILE(),
                  int line = __builtin_LINE());

/// The same with any message; gives the message.
std::string expectThrownClass(JNIEnv* env, const char* className, const char* file = __builtin_FILE(),
                              int line = __builtin_LINE());

/// Expects no Java exception to be pending; one that is gets printed and cleared.
void expectNoThrow(JNIEnv* env, const char* file = __builtin_FILE(), int line = __builtin_LINE());

/// Expects `result`, what a native gave, to be zero or null, with this exception pending.
template <typename T>
void expectRefused(JNIEnv* env, T result, const char* className, const char* message,
                   const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (result != T{}) {
        ADD_FAILURE_AT(file, line) << "a result and an exception";
    }
    expectThrown(env, className, message, file, line);
}

/// Runs `call` while the n-th call of one JNI function fails, and expects the OutOfMemoryError of that to be pending.
template <typename Function, typename Call>
void expectOutOfMemory(JNIEnv* env, Function JNINativeInterface_::*member, const Call& call, int n = 1) {
    {
        const JniFaults faults(env, member, n);
        call();
        EXPECT_TRUE(faults.struck());
    }
    expectThrownClass(env, "java/lang/OutOfMemoryError");
}

}  // namespace nativevrl::test
