#include "entry/javavmconfig.h"
#include "entry/librarystate.h"
#include "entry/showcase.h"
#include "entry/startup.h"
#include "support/heapblocks.h"
#include "support/natives.h"
#include "support/race.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/jvmattach.h"

#include <stdexcept>
#include <utility>

extern "C" jclass Java_com_norvane_toolbox_loomkit_internal_JBOSSHack_loadOJI(JNIEnv*, jclass, jstring, jstring,
                                                                              jobject);

namespace nativevrl::test::javavmconfig {

constexpr auto loadOJI = &Java_com_norvane_toolbox_loomkit_internal_JBOSSHack_loadOJI;
constexpr const char* standIn = "com/norvane/toolbox/loomkit/testing/LoaderStandIn";

class VmConfig : public JvmTest {
protected:
    JavaVMConfigLoomkit config() {
        return JavaVMConfigLoomkit(javaVm(),
                                   tether::GlobalRef<jclass>::taking(*sharedEnvInjector, env, findClass(env, standIn)));
    }

    std::string seen() {
        jclass cls = findClass(env, standIn);
        jfieldID field = env->GetStaticFieldID(cls, "seen", "Ljava/lang/String;");
        return toText(env, env->GetStaticObjectField(cls, field));
    }
};

TEST_F(VmConfig, PassesOnWhatFollowsThePrefixes) {
    JavaVMConfigLoomkit loader = config();
    const JniCounter counter(env);
    jclass loaded = loader.loadOJI("-verbose -Djava.class.path=/a/b.jar:/c d", "-Djava.library.path=/lib");
    EXPECT_EQ(seen(), "/a/b.jar:/c d|/lib");
    EXPECT_EQ(describe(env, loaded), "class java.lang.StringBuilder");
    EXPECT_EQ(counter.globalReferences(), 0) << "the result is new, the class reference gone";
    EXPECT_TRUE(loader.hasJavaVM());
    env->DeleteGlobalRef(loaded);
}

TEST_F(VmConfig, AnOptionWithoutItsPrefixGivesItsTailOrFails) {
    {
        JavaVMConfigLoomkit loader = config();
        env->DeleteGlobalRef(loader.loadOJI("12345678901234567tail", "1234567890123456789rest"));
        EXPECT_EQ(seen(), "tail|rest");
    }
    JavaVMConfigLoomkit loader = config();
    for (const auto& [classPath, libraryPath] :
         {std::pair{"-Dshort", "-Djava.library.path=y"}, std::pair{"-Djava.class.path=x", "-Dshort"}}) {
        try {
            loader.loadOJI(classPath, libraryPath);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::out_of_range& failure) {
            EXPECT_STREQ(failure.what(), "invalid string position");
        }
    }
}

TEST_F(VmConfig, ASecondLoadHasNoClassToAsk) {
    JavaVMConfigLoomkit loader = config();
    env->DeleteGlobalRef(loader.loadOJI("-Djava.class.path=x", "-Djava.library.path=y"));
    EXPECT_THROW(loader.loadOJI("-Djava.class.path=x", "-Djava.library.path=y"), JavaVMConfigException);
    expectThrownClass(env, "java/lang/NullPointerException");
}

TEST_F(VmConfig, AFailureCarriesTheTextOfTheJavaException) {
    JavaVMConfigLoomkit loader = config();
    try {
        loader.loadOJI("-Djava.class.path=fail", "-Djava.library.path=y");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const JavaVMConfigException& failure) {
        const std::string text = failure.what();
        EXPECT_NE(text.find("\njava.lang.IllegalStateException: nothing to load"), std::string::npos) << text;
    }
    expectThrown(env, "java/lang/IllegalStateException", "nothing to load");
}

TEST_F(VmConfig, AMachineThatIsOutOfReachOnceLeavesNoReference) {
    constexpr int reachings = 3;
    for (int missed = 1; missed <= reachings + 1; ++missed) {
        const JniCounter counter(env);
        {
            int left = 0;
            const auto getEnv = [&](JNIEnv** given) {
                *given = --left == 0 ? nullptr : env;
                return JNI_OK;
            };
            const tether::JNIEnvInjector injector(getEnv, getEnv, [] { return JNI_OK; });
            JavaVMConfigLoomkit loader(javaVm(), tether::GlobalRef<jclass>::of(injector, findClass(env, standIn)));
            left = missed;
            try {
                env->DeleteGlobalRef(loader.loadOJI("-Djava.class.path=x", "-Djava.library.path=y"));
                EXPECT_GT(missed, reachings);
            } catch (const JavaVMConfigException&) {
                EXPECT_LE(missed, reachings);
            }
        }
        EXPECT_EQ(counter.globalReferences(), 0) << "missed " << missed;
    }
}

TEST_F(VmConfig, TheRuntimeIsConfiguredOnceByWhoeverComesFirst) {
    for (int round = 0; round < 20; ++round) {
        forgetStartup();
        EXPECT_EQ(raceInFindClass(env, configureRuntimeOnce), 0);
        const boost::shared_ptr<jzi::JavaVMConfig> known = vrlGetJavaVMConfig();
        ASSERT_NE(known, nullptr);
        EXPECT_EQ(known->getJavaVM(), javaVm());
        configureRuntimeOnce(env);
        EXPECT_EQ(vrlGetJavaVMConfig(), known);
    }
}

TEST_F(VmConfig, AFailedStartLeavesTheWayFree) {
    forgetStartup();
    const boost::shared_ptr<jzi::JavaVMConfig> before = vrlGetJavaVMConfig();
    expectOutOfMemory(env, &JNINativeInterface_::FindClass,
                      [&] { EXPECT_THROW(configureRuntimeOnce(env), tether::Exception); });
    EXPECT_EQ(vrlGetJavaVMConfig(), before);
    configureRuntimeOnce(env);
    EXPECT_NE(vrlGetJavaVMConfig(), before);
}

TEST_F(VmConfig, TheNativeLoaderReleasesItsTextAndPassesExceptionsOn) {
    jobject loader = callObject(env, findClass(env, standIn), "getClassLoader", "()Ljava/lang/ClassLoader;");
    jstring text = javaString(env, u"path");
    const JniCounter counter(env);
    jclass loaded = loadOJI(env, nullptr, text, text, loader);
    expectNoThrow(env);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(env->GetObjectRefType(loaded), JNIGlobalRefType);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    env->DeleteGlobalRef(loaded);
    const auto fail = [&] { EXPECT_EQ(loadOJI(env, nullptr, text, text, loader), nullptr); };
    expectOutOfMemory(env, &JNINativeInterface_::GetStringUTFChars, fail, 2);
    const JniCounter references(env);
    expectOutOfMemory(env, &JNINativeInterface_::CallObjectMethodA, fail);
    EXPECT_EQ(references.localReferences(), 0);
    EXPECT_EQ(counter.pinnedBlocks() + counter.globalReferences(), 0);
}

TEST_F(VmConfig, TheTextOfAnExceptionAndThePlaceOfTheMachineBearALackOfMemory) {
    env->ThrowNew(findClass(env, "java/lang/IllegalStateException"),
                  "a message that is longer than what needs no memory");
    loomkit::test::heapBlocksLeft = 0;
    const std::string text = jvm_attach::exceptionToString(env);
    loomkit::test::heapBlocksLeft = -1;
    EXPECT_EQ(text, "out of memory");
    expectThrownClass(env, "java/lang/IllegalStateException");
    loomkit::test::heapBlocksLeft = 0;
    EXPECT_THROW(jvm_attach::getJVMLocation(), tether::OutOfMemoryException);
    loomkit::test::heapBlocksLeft = -1;
}

}  // namespace nativevrl::test::javavmconfig
