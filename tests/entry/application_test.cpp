#include "entry/javastringargv.h"
#include "support/jvmtest.h"
#include "support/natives.h"
#include "vrlbase/vrlbase.h"

#include <string>

namespace nativevrl::test::application {

jobjectArray strings(JNIEnv* env, const std::vector<const char16_t*>& texts) {
    std::vector<jobject> elements;
    for (const char16_t* text : texts) {
        elements.push_back(text == nullptr ? nullptr : javaString(env, text));
    }
    return objectArray(env, "java/lang/String", elements);
}

using StringArgv = JvmTest;

TEST_F(StringArgv, HoldsTheCharactersForItsLifetimeAndAFewWithoutAllocation) {
    for (const std::size_t count : {0, 1, 5, 6, 40}) {
        std::vector<const char16_t*> texts(count, u"a\u00e4");
        std::fill_n(texts.begin(), count / 5, nullptr);
        jobjectArray options = strings(env, texts);
        const JniCounter counter(env);
        {
            JavaStringArgv argv(env, options);
            EXPECT_EQ(argv.count(), count);
            EXPECT_EQ(argv.isInline(), count <= 5) << count;
            for (std::size_t i = 0; i < count; ++i) {
                EXPECT_STREQ(argv.argv()[i], texts[i] == nullptr ? nullptr : "a\xc3\xa4");
            }
            EXPECT_EQ(counter.pinnedBlocks(), static_cast<int>(count - count / 5));
        }
        EXPECT_EQ(counter.pinnedBlocks() + counter.localReferences(), 0);
    }
    EXPECT_EQ(JavaStringArgv(env, nullptr).count(), 0U);
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

    jboolean start(jobjectArray options) { return NVKRT(vrlInitializeApplication)(env, nullptr, options); }
};

TEST_F(Application, StartsWithOptionsAndStops) {
    const auto expectState = [&](bool started) {
        EXPECT_EQ(NVKRT(vrlIsKRTInitialized)(env, nullptr) != JNI_FALSE, started);
        EXPECT_EQ(NVKRT(vrlIsNoDisplaySet)(env, nullptr) != JNI_FALSE, started);
        EXPECT_EQ(NVKRT(vrlIsJVMEnabled)(env, nullptr) == JNI_FALSE, started);
    };
    expectState(false);
    EXPECT_FALSE(start(strings(env, {u"-nodisplay", u"-fast"})));
    const std::string message = expectThrownClass(env, "com/norvane/toolbox/loomkit/NVException");
    EXPECT_EQ(message.find("An error occurred while initializing the KRT.\n"), 0U) << message;
    EXPECT_NE(message.find("-fast"), std::string::npos) << message;
    expectState(false);
    EXPECT_TRUE(start(strings(env, {u"-nodisplay", u"-nojvm"})));
    expectState(true);
    EXPECT_TRUE(NVKRT(vrlTerminateApplication)(env, nullptr));
    expectState(false);
}

TEST_F(Application, CopiedCharactersOfAMacroAreGivenBack) {
    const JniCounter counter(env);
    NVKRT(vrlAddCanonicalPathMacro)(env, nullptr, javaString(env, u"LOOMKIT_TEST"), javaString(env, u"/somewhere"));
    EXPECT_EQ(counter.calls(&JNINativeInterface_::GetStringUTFChars), 2);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

}  // namespace nativevrl::test::application
