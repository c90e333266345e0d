#include "tether/envinjector.h"
#include "entry/librarystate.h"
#include "support/heapblocks.h"
#include "support/jvmtest.h"
#include "tether/globalref.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace nativevrl::test::envinjector {

bool threadIsKnown() { return currentEnv() != nullptr; }

std::string threadName(JNIEnv* env) {
    jclass cls = findClass(env, "java/lang/Thread");
    jmethodID current = env->GetStaticMethodID(cls, "currentThread", "()Ljava/lang/Thread;");
    requireNoThrow(env, "Thread.currentThread");
    jobject thread = env->CallStaticObjectMethodA(cls, current, nullptr);
    requireNoThrow(env, "Thread.currentThread()");
    return toText(env, callObject(env, thread, "getName", "()Ljava/lang/String;"));
}

using EnvInjector = JvmTest;

TEST_F(EnvInjector, AnUnknownThreadIsAttachedForOneCallable) {
    onUnknownThread([] {
        EXPECT_EQ(sharedEnvInjector->run(threadName), "<anonymous thread>");
        EXPECT_FALSE(threadIsKnown());
        sharedEnvInjector->run([](JNIEnv* outer) {
            sharedEnvInjector->run([outer](JNIEnv* inner) { EXPECT_EQ(inner, outer); });
            EXPECT_TRUE(threadIsKnown()) << "the inner run must not detach";
        });
        EXPECT_FALSE(threadIsKnown());
    });
}

TEST_F(EnvInjector, AThrowingCallableLeavesTheThreadDetached) {
    onUnknownThread([] {
        EXPECT_THROW(sharedEnvInjector->run([](JNIEnv*) { throw std::runtime_error("from the callable"); }),
                     std::runtime_error);
        EXPECT_FALSE(threadIsKnown());
    });
}

/// Functions that answer as told and count how often they are asked.
struct Answers {
    int getEnvResult = 0;
    bool getEnvGives = true;
    int attachResult = 0;
    bool attachGives = true;
    int attached = 0;
    int detached = 0;

    tether::JNIEnvInjector injector(JNIEnv* env) {
        return {[this, env](JNIEnv** given) {
                    *given = getEnvGives ? env : *given;
                    return getEnvResult;
                },
                [this, env](JNIEnv** given) {
                    ++attached;
                    *given = attachGives ? env : *given;
                    return attachResult;
                },
                [this] {
                    ++detached;
                    return 0;
                }};
    }
};

TEST_F(EnvInjector, LooksOnlyAtTheEnvironmentUnlessTheThreadIsDetached) {
    const auto give = [](JNIEnv* given) { return given; };
    for (const int result : {JNI_OK, JNI_ERR, JNI_EVERSION}) {
        Answers answers;
        answers.getEnvResult = result;
        EXPECT_EQ(answers.injector(env).run(give), env);
        answers.getEnvGives = false;
        EXPECT_THROW(answers.injector(env).run(give), tether::GetEnvError);
        EXPECT_EQ(answers.attached, 0);
        EXPECT_EQ(answers.detached, 0);
    }
}

TEST_F(EnvInjector, AttachesADetachedThreadOrSaysThatItCannot) {
    const auto give = [](JNIEnv* given) { return given; };
    Answers answers;
    answers.getEnvResult = JNI_EDETACHED;
    answers.getEnvGives = false;
    EXPECT_EQ(answers.injector(env).run(give), env);
    EXPECT_EQ(answers.attached, 1);
    EXPECT_EQ(answers.detached, 1);
    answers.attachGives = false;
    EXPECT_THROW(answers.injector(env).run(give), tether::AttachCurrentThreadError);
    answers.attachGives = true;
    answers.attachResult = JNI_ERR;
    EXPECT_THROW(answers.injector(env).run(give), tether::AttachCurrentThreadError);
    EXPECT_EQ(answers.detached, 1) << "what was not attached is not detached";
}

TEST_F(EnvInjector, MayEndInsideItsOwnRun) {
    Answers answers;
    answers.getEnvResult = JNI_EDETACHED;
    answers.getEnvGives = false;
    std::optional<tether::JNIEnvInjector> injector(answers.injector(env));
    injector->run([&](JNIEnv*) { injector.reset(); });
    EXPECT_EQ(answers.detached, 1);
}

TEST_F(EnvInjector, ReferencesAreMovedAndSwappedWithoutMemory) {
    using Ref = tether::GlobalRef<jobject>;
    const JniCounter counter(env);
    {
        Ref held = Ref::of(*sharedEnvInjector, javaString(env, u"held"));
        Ref other = Ref::taking(*sharedEnvInjector, env, javaString(env, u"other"));
        jobject reference = held.get();
        loomkit::test::heapBlocksLeft = 0;
        Ref moved(std::move(held));
        other = std::move(moved);
        loomkit::test::heapBlocksLeft = -1;
        EXPECT_EQ(other.get(), reference);
        EXPECT_EQ(held.get(), nullptr);
        EXPECT_EQ(counter.globalReferences(), 1);
        const Ref copy(other);
        EXPECT_NE(copy.get(), reference);
        EXPECT_EQ(counter.globalReferences(), 2);
    }
    EXPECT_EQ(counter.globalReferences(), 0);
}

TEST_F(EnvInjector, AGlobalReferenceThatCannotEndLetsNothingOut) {
    bool fails = false;
    const auto getEnv = [&](JNIEnv** given) {
        if (fails) {
            throw std::runtime_error("no memory to attach");
        }
        *given = env;
        return JNI_OK;
    };
    const tether::JNIEnvInjector injector(getEnv, getEnv, [] { return JNI_OK; });
    std::optional<tether::GlobalRef<jobject>> reference;
    reference.emplace(tether::GlobalRef<jobject>::of(injector, javaString(env, u"held")));
    jobject held = reference->get();
    fails = true;
    EXPECT_NO_THROW(reference.reset());
    env->DeleteGlobalRef(held);
}

}  // namespace nativevrl::test::envinjector
