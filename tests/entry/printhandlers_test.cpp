#include "entry/javaprinthandler.h"
#include "entry/librarystate.h"
#include "krt/component.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"
#include "support/natives.h"

namespace nativevrl::test::printhandlers {

class PrintHandlers : public JvmTest {
protected:
    void TearDown() override {
        NVKRT(vrlResetDefaultPrintHandlers)(env, nullptr);
        JvmTest::TearDown();
    }

    void setDefaults(jobject first, jobject second) { NVKRT(vrlSetDefaultPrintHandlers)(env, nullptr, first, second); }
};

TEST_F(PrintHandlers, PrintTheTextAsItIs) {
    jobject target = recorder(env);
    const JavaPrintHandler handler(*sharedEnvInjector, target);
    const JniCounter counter(env);
    EXPECT_EQ(handler("one"), 0);
    EXPECT_EQ(handler(""), 0);
    EXPECT_EQ(handler(" two\n"), 0);
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::CallVoidMethodA), 3) << "an empty text is printed as well";
    EXPECT_EQ(recordedText(env, target), "one two\n");
}

TEST_F(PrintHandlers, WorkOnThreadsThatTheMachineDoesNotKnow) {
    jobject target = recorder(env);
    onUnknownThread([copy = JavaPrintHandler(*sharedEnvInjector, target)] {
        EXPECT_EQ(copy("from afar"), 0);
        EXPECT_EQ(currentEnv(), nullptr);
    });
    EXPECT_EQ(recordedText(env, target), "from afar");
    EXPECT_EQ(recordedThread(env, target), "<anonymous thread>");
}

TEST_F(PrintHandlers, AFailureIsTheResultAndItsExceptionStays) {
    for (const auto& [hasStream, message] : {std::pair(false, "there is no stream"), {true, "the stream refuses"}}) {
        const JavaPrintHandler handler(*sharedEnvInjector, failingOutput(env, hasStream));
        EXPECT_EQ(handler("text"), -1);
        expectThrown(env, "java/lang/IllegalStateException", message);
        onUnknownThread([&] {
            EXPECT_EQ(handler("text"), -1);
            EXPECT_EQ(currentEnv(), nullptr) << "detached again";
        });
    }
}

TEST_F(PrintHandlers, EveryCopyOwnsAReference) {
    jobject target = recorder(env);
    const JniCounter counter(env);
    {
        const JavaPrintHandler first(*sharedEnvInjector, target);
        EXPECT_EQ(counter.globalReferences(), 1);
        const std::vector<JavaPrintHandler> copies(2, first);
        EXPECT_EQ(counter.globalReferences(), 3);
        const boost::function<int(const char*)> function = copies[0];
        EXPECT_EQ(counter.globalReferences(), 4);
        EXPECT_EQ(function("x"), 0);
    }
    EXPECT_EQ(counter.globalReferences(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
}

TEST_F(PrintHandlers, TheFirstDefaultGetsWarningsAndTheSecondOrdinaryOutputUntilAReset) {
    jobject first = recorder(env);
    jobject second = recorder(env);
    const JniCounter counter(env);
    setDefaults(first, second);
    EXPECT_EQ(counter.globalReferences(), 2);
    krtPrint(nullptr, "ordinary");
    krtWarn(nullptr, "watch out");
    EXPECT_EQ(recordedText(env, second), "ordinary");
    EXPECT_EQ(recordedText(env, first), "Warning: watch out\n");
    setDefaults(second, first);
    EXPECT_EQ(counter.globalReferences(), 2) << "the old pair went";
    krtPrint(nullptr, " more");
    NVKRT(vrlResetDefaultPrintHandlers)(env, nullptr);
    EXPECT_EQ(counter.globalReferences(), 0);
    krtPrint(nullptr, "dropped");
    EXPECT_EQ(recordedText(env, first), "Warning: watch out\n more");
}

TEST_F(PrintHandlers, FailedDefaultsLeaveTheOldOnes) {
    jobject target = recorder(env);
    jobject other = recorder(env);
    setDefaults(target, target);
    expectOutOfMemory(env, &JNINativeInterface_::FindClass, [&] { setDefaults(other, other); });
    krtPrint(nullptr, "still here");
    EXPECT_EQ(recordedText(env, target), "still here");
}

}  // namespace nativevrl::test::printhandlers
