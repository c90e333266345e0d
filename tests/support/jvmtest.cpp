#include "support/jvmtest.h"

#include "qx/qx.h"

namespace nativevrl::test {

namespace {

/// Room for the references of one test, so that only natives can exceed their capacity.
constexpr jint localFrameCapacity = 4096;

struct Thrown {
    std::string className;
    bool hasMessage = false;
    std::string message;
};

/// Takes the pending exception, which must be there.
Thrown takePending(JNIEnv* env) {
    jthrowable exception = env->ExceptionOccurred();
    env->ExceptionClear();
    jstring message = static_cast<jstring>(callObject(env, exception, "getMessage", "()Ljava/lang/String;"));
    Thrown thrown{classNameOf(env, exception), message != nullptr, toText(env, message)};
    if (message != nullptr) {
        env->DeleteLocalRef(message);
    }
    env->DeleteLocalRef(exception);
    return thrown;
}

}  // namespace

void JvmTest::SetUp() {
    env = currentEnv();
    ASSERT_EQ(env->PushLocalFrame(localFrameCapacity), JNI_OK);
    arraysBefore_ = qxLiveArrayCount();
}

void JvmTest::TearDown() {
    expectNoThrow(env);
    EXPECT_FALSE(JniProbe::installed());
    env->PopLocalFrame(nullptr);
    EXPECT_EQ(qxLiveArrayCount(), arraysBefore_) << "native arrays alive after the test, and before it";
}

void expectThrown(JNIEnv* env, const char* className, const char* message, const char* file, int line) {
    if (env->ExceptionCheck() == JNI_FALSE) {
        ADD_FAILURE_AT(file, line) << "nothing was thrown; expected " << className << ": "
                                   << (message ? message : "(null)");
        return;
    }
    const Thrown thrown = takePending(env);
    const bool asExpected = thrown.className == className && thrown.hasMessage == (message != nullptr) &&
                            (message == nullptr || thrown.message == message);
    if (!asExpected) {
        ADD_FAILURE_AT(file, line) << "thrown:   " << thrown.className << ": "
                                   << (thrown.hasMessage ? thrown.message : "(null)") << "\nexpected: " << className
                                   << ": " << (message ? message : "(null)");
    }
}

std::string expectThrownClass(JNIEnv* env, const char* className, const char* file, int line) {
    if (env->ExceptionCheck() == JNI_FALSE) {
        ADD_FAILURE_AT(file, line) << "nothing was thrown; expected " << className;
        return {};
    }
    const Thrown thrown = takePending(env);
    if (thrown.className != className) {
        ADD_FAILURE_AT(file, line) << "thrown: " << thrown.className << ": " << thrown.message
                                   << "\nexpected: " << className;
    }
    return thrown.message;
}

void expectNoThrow(JNIEnv* env, const char* file, int line) {
    if (env->ExceptionCheck() != JNI_FALSE) {
        const Thrown thrown = takePending(env);
        ADD_FAILURE_AT(file, line) << "thrown: " << thrown.className << ": " << thrown.message;
    }
}

}  // namespace nativevrl::test
