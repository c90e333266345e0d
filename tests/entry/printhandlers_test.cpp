#include "entry/javaprinthandler.h"
#include "entry/librarystate.h"
#include "krt/component.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

namespace nativevrl::test {

namespace {

class PrintHandlers : public JvmTest {
protected:
    void TearDown() override {
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlResetDefaultPrintHandlers(env, nullptr);
        JvmTest::TearDown();
    }

    void setDefaults(jobject first, jobject second) {
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlSetDefaultPrintHandlers(env, nullptr, first, second);
    }
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
    const JavaPrintHandler handler(*sharedEnvInjector, target);
    onUnknownThread([&] {
        EXPECT_EQ(handler("from afar"), 0);
        EXPECT_EQ(currentEnv(), nullptr);
    });
    EXPECT_EQ(recordedText(env, target), "from afar");
    EXPECT_EQ(recordedThread(env, target), "<anonymous thread>");
}

TEST_F(PrintHandlers, AFailureIsTheResultAndItsExceptionStays) {
    const struct {
        bool hasStream;
        const char* message;
    } cases[] = {{false, "there is no stream"}, {true, "the stream refuses"}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.message);
        const JavaPrintHandler handler(*sharedEnvInjector, failingOutput(env, one.hasStream));
        const JniCounter counter(env);
        EXPECT_EQ(handler("text"), -1);
        expectThrown(env, "java/lang/IllegalStateException", one.message);
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

TEST_F(PrintHandlers, ACopyMayEndOnAnyThread) {
    jobject target = recorder(env);
    onUnknownThread([copy = JavaPrintHandler(*sharedEnvInjector, target)] { EXPECT_EQ(copy("last words"), 0); });
    EXPECT_EQ(recordedText(env, target), "last words");
}

TEST_F(PrintHandlers, TheFirstDefaultGetsWarningsAndTheSecondOrdinaryOutput) {
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
    EXPECT_EQ(recordedText(env, first), "Warning: watch out\n more");
}

TEST_F(PrintHandlers, AfterAResetOutputIsDropped) {
    jobject target = recorder(env);
    const JniCounter counter(env);
    setDefaults(target, target);
    Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlResetDefaultPrintHandlers(env, nullptr);
    EXPECT_EQ(counter.globalReferences(), 0);
    krtPrint(nullptr, "lost");
    EXPECT_EQ(recordedText(env, target), "");
}

TEST_F(PrintHandlers, FailedDefaultsLeaveTheOldOnes) {
    jobject target = recorder(env);
    jobject other = recorder(env);
    setDefaults(target, target);
    {
        const JniFaults faults(env, &JNINativeInterface_::FindClass, 1);
        setDefaults(other, other);
    }
    expectThrownClass(env, "java/lang/OutOfMemoryError");
    krtPrint(nullptr, "still here");
    EXPECT_EQ(recordedText(env, target), "still here");
}

}  // namespace

}  // namespace nativevrl::test
