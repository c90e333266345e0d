#include "entry/javastringargv.h"
#include "support/jvmtest.h"
#include "vrlbase/vrlbase.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <string>

namespace nativevrl::test {

namespace {

jobjectArray strings(JNIEnv* env, const std::vector<const char16_t*>& texts) {
    std::vector<jobject> elements;
    for (const char16_t* text : texts) {
        elements.push_back(text == nullptr ? nullptr : javaString(env, text));
    }
    return objectArray(env, "java/lang/String", elements);
}

using StringArgv = JvmTest;

TEST_F(StringArgv, HoldsTheCharactersForItsLifetime) {
    jobjectArray options = strings(env, {u"-nojvm", nullptr, u"a\u00e4"});
    const JniCounter counter(env);
    {
        JavaStringArgv argv(env, options);
        ASSERT_EQ(argv.count(), 3U);
        EXPECT_STREQ(argv.argv()[0], "-nojvm");
        EXPECT_EQ(argv.argv()[1], nullptr);
        EXPECT_STREQ(argv.argv()[2], "a\xc3\xa4");
        EXPECT_EQ(counter.pinnedBlocks(), 2);
    }
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
}

TEST_F(StringArgv, FiveStringsNeedNoAllocation) {
    for (const std::size_t count : {0, 1, 5, 6, 40}) {
        JavaStringArgv argv(env, strings(env, std::vector<const char16_t*>(count, u"x")));
        EXPECT_EQ(argv.count(), count);
        EXPECT_EQ(argv.isInline(), count <= 5) << count;
        ASSERT_NE(argv.argv(), nullptr);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_STREQ(argv.argv()[i], "x");
        }
    }
    JavaStringArgv ofNull(env, nullptr);
    EXPECT_EQ(ofNull.count(), 0U);
    EXPECT_TRUE(ofNull.isInline());
}

/// The runtime is stopped before and after each test.
class Application : public JvmTest {
protected:
    void SetUp() override {
        JvmTest::SetUp();
        vrlTerminateApplicationImpl();
    }
    void TearDown() override {
        vrlTerminateApplicationImpl();
        JvmTest::TearDown();
    }

    jboolean start(jobjectArray options) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlInitializeApplication(env, nullptr, options);
    }
    jboolean stop() { return Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlTerminateApplication(env, nullptr); }
};

TEST_F(Application, StartsWithOptionsAndStops) {
    EXPECT_FALSE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsKRTInitialized(env, nullptr));
    const JniCounter counter(env);
    EXPECT_TRUE(start(strings(env, {u"-nodisplay", u"-nojvm"})));
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_TRUE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsKRTInitialized(env, nullptr));
    EXPECT_TRUE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsNoDisplaySet(env, nullptr));
    EXPECT_FALSE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsJVMEnabled(env, nullptr));
    EXPECT_TRUE(stop());
    EXPECT_FALSE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsKRTInitialized(env, nullptr));
    EXPECT_FALSE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsNoDisplaySet(env, nullptr));
    EXPECT_TRUE(Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsJVMEnabled(env, nullptr));
}

TEST_F(Application, ABadOptionIsNamedAndChangesNothing) {
    const JniCounter counter(env);
    EXPECT_FALSE(start(strings(env, {u"-nodisplay", u"-fast"})));
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    const std::string message = expectThrownClass(env, "com/norvane/toolbox/loomkit/NVException");
    EXPECT_EQ(message.find("An error occurred while initializing the KRT.\n"), 0U) << message;
    EXPECT_NE(message.find("-fast"), std::string::npos) << message;
    EXPECT_FALSE(vrlIsKRTInitialized());
    EXPECT_FALSE(vrlIsNoDisplaySet());
}

TEST_F(Application, CopiedCharactersOfAMacroAreGivenBack) {
    const JniCounter counter(env);
    Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlAddCanonicalPathMacro(
        env, nullptr, javaString(env, u"LOOMKIT_TEST"), javaString(env, u"/somewhere"));
    EXPECT_EQ(counter.calls(&JNINativeInterface_::GetStringUTFChars), 2);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

}  // namespace

}  // namespace nativevrl::test
