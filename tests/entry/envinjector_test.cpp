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
        EXPECT_THROW(sharedEnvInjector->run([](JNIEnv*) { throw std::runtime_error("from the callable"); }),
                     std::runtime_error);
        EXPECT_FALSE(threadIsKnown());
    });
}

/// What GetEnv or AttachCurrentThread answers, and whether it gives an environment with it.
struct Answer {
    int result;
    bool gives;
};

/// How often the functions of an injector were asked.
struct Asked {
    int attach = 0;
    int detach = 0;

    tether::JNIEnvInjector injector(JNIEnv* env, Answer getEnv, Answer attaching) {
        return {[=](JNIEnv** given) {
                    *given = getEnv.gives ? env : *given;
                    return getEnv.result;
                },
                [=](JNIEnv** given) {
                    ++attach;
                    *given = attaching.gives ? env : *given;
                    return attaching.result;
                },
                [this] {
                    ++detach;
                    return JNI_OK;
                }};
    }
};

constexpr Answer yes{JNI_OK, true};
constexpr Answer detached{JNI_EDETACHED, false};

TEST_F(EnvInjector, AttachesADetachedThreadAndNoOther) {
    const auto give = [](JNIEnv* given) { return given; };
    for (const int result : {JNI_OK, JNI_ERR, JNI_EVERSION}) {
        Asked asked;
        EXPECT_EQ(asked.injector(env, {result, true}, yes).run(give), env);
        EXPECT_THROW(asked.injector(env, {result, false}, yes).run(give), tether::GetEnvError);
        EXPECT_EQ(asked.attach + asked.detach, 0) << "only the environment counts";
    }
    Asked asked;
    EXPECT_EQ(asked.injector(env, detached, yes).run(give), env);
    for (const Answer& no : {Answer{JNI_OK, false}, Answer{JNI_ERR, true}}) {
        EXPECT_THROW(asked.injector(env, detached, no).run(give), tether::AttachCurrentThreadError);
    }
    EXPECT_EQ(asked.attach, 3);
    EXPECT_EQ(asked.detach, 1) << "what was not attached is not detached";
    std::optional<tether::JNIEnvInjector> injector(asked.injector(env, detached, yes));
    injector->run([&](JNIEnv*) { injector.reset(); });
    EXPECT_EQ(asked.detach, 2) << "it may end inside its own run";
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
