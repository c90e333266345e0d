#include "proxies/jboxedproxies.h"
#include "proxies/jclassproxy.h"
#include "proxies/jnvarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"
#include "proxies/jobjectproxy.h"
#include "support/jvmtest.h"
#include "support/race.h"
#include "tether/exceptions.h"

namespace nativevrl::test::classproxies {

class AbsentClassProxy : public JSingletonClassProxy<AbsentClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "com/norvane/toolbox/loomkit/testing/Absent"; }
};

class LackingClassProxy : public JSingletonClassProxy<LackingClassProxy> {
public:
    LackingClassProxy(JNIEnv* env, jclass cls) : JSingletonClassProxy(env, cls), absent(method("absent", "()V")) {}
    static const char* className() { return "java/util/ArrayList"; }
    const jmethodID absent;
};

class FreshClassProxy : public JSingletonClassProxy<FreshClassProxy> {
public:
    FreshClassProxy(JNIEnv* env, jclass cls) : JSingletonClassProxy(env, cls), size(method("size", "()I")) {}
    static const char* className() { return "java/util/TreeMap"; }
    const jmethodID size;
};

/// Each test starts from empty slots.
class ClassProxies : public JvmTest {
protected:
    void SetUp() override {
        JvmTest::SetUp();
        disposeClassProxies(env);
    }
};

TEST_F(ClassProxies, ResolveOncePerProcess) {
    const JniCounter counter(env);
    auto* first = FreshClassProxy::instance(env);
    EXPECT_EQ(FreshClassProxy::instance(env), first);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::GetMethodID), 1);
    EXPECT_EQ(counter.weakReferences(), 1);
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(callInt(env, newObject(env, "java/util/TreeMap", "()V"), "size", "()I"), 0);
    EXPECT_TRUE(first->isInstance(env, newObject(env, "java/util/TreeMap", "()V")));
    EXPECT_FALSE(first->isInstance(env, javaString(env, u"")));
}

TEST_F(ClassProxies, TeardownReleasesAllAndASecondLoadBuildsThemAgain) {
    const JniCounter counter(env);
    JObjectClassProxy::instance(env);
    JClassClassProxy::instance(env);
    JDoubleClassProxy::instance(env);
    JObjectArrayClassProxy<JDoubleProxy>::instance(env);
    EXPECT_EQ(counter.weakReferences(), 4);
    disposeClassProxies(env);
    EXPECT_EQ(counter.weakReferences(), 0);
    disposeClassProxies(env);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::DeleteWeakGlobalRef), 4);
    JObjectClassProxy::instance(env);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 5);
    EXPECT_EQ(counter.weakReferences(), 1);
}

TEST_F(ClassProxies, TeardownWorksOnAThreadThatBuiltNothing) {
    FreshClassProxy::instance(env);
    onAttachedThread([](JNIEnv* other) {
        const JniCounter counter(other);
        disposeClassProxies(other);
        EXPECT_EQ(counter.weakReferences(), -1);
    });
    const JniCounter counter(env);
    EXPECT_NE(FreshClassProxy::instance(env), nullptr);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 1);
}

TEST_F(ClassProxies, AMissingClassOrMethodFailsEachTimeAndUndoesTheHalfBuiltProxy) {
    const JniCounter counter(env);
    for (int attempt = 1; attempt <= 2; ++attempt) {
        EXPECT_THROW(AbsentClassProxy::instance(env), tether::FindClassException);
        expectThrown(env, "java/lang/NoClassDefFoundError", AbsentClassProxy::className());
        EXPECT_THROW(LackingClassProxy::instance(env), tether::Exception);
        expectThrown(env, "java/lang/NoSuchMethodError", "absent");
    }
    expectOutOfMemory(env, &JNINativeInterface_::NewWeakGlobalRef,
                      [&] { EXPECT_THROW(FreshClassProxy::instance(env), tether::NewWeakGlobalRefError); });
    disposeClassProxies(env);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::NewWeakGlobalRef), 2);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::DeleteWeakGlobalRef), 2);
}

TEST_F(ClassProxies, GiveTheClassLoaderOnAnyThread) {
    JNIEnv* builder = nullptr;
    onAttachedThread([&](JNIEnv* other) {
        builder = other;
        JNVArrayClassProxy::instance(other);
    });
    ASSERT_NE(builder, env);
    const JniCounter counter(env);
    const JObjectRef loader = JNVArrayClassProxy::instance(env)->getClassLoader(env);
    EXPECT_EQ(counter.localReferences(), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::CallObjectMethodA), 1);
    EXPECT_FALSE(loader.isNull());
    EXPECT_TRUE(JObjectClassProxy::instance(env)->getClassLoader(env).isNull());
}

/// Asks for the proxy of a class while that class is looked up, as a class loader may.
class AskingAgain : public JniProbe {
public:
    using JniProbe::JniProbe;
    bool admits(const JniFunction& function) override {
        if (function.slot == jniSlot(&JNINativeInterface_::FindClass) && inner_ == nullptr && !asking_) {
            asking_ = true;
            inner_ = FreshClassProxy::instance(env());
        }
        return true;
    }
    FreshClassProxy* inner() const { return inner_; }

private:
    bool asking_ = false;
    FreshClassProxy* inner_ = nullptr;
};

TEST_F(ClassProxies, ALookUpThatComesBackForItsOwnClassLeavesOneProxy) {
    const JniCounter counter(env);
    {
        const AskingAgain loader(env);
        const auto* outer = FreshClassProxy::instance(env);
        EXPECT_EQ(outer, loader.inner());
    }
    EXPECT_EQ(FreshClassProxy::instance(env), FreshClassProxy::instance(env));
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 2);
    EXPECT_EQ(counter.weakReferences(), 1);
    disposeClassProxies(env);
    EXPECT_EQ(counter.weakReferences(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
}

TEST_F(ClassProxies, TwoThreadsOnAFreshSlotBuildOneProxy) {
    for (int round = 0; round < 20; ++round) {
        FreshClassProxy* ours = nullptr;
        FreshClassProxy* ofOther = nullptr;
        EXPECT_EQ(
            raceInFindClass(env, [&](JNIEnv* own) { (own == env ? ours : ofOther) = FreshClassProxy::instance(own); }),
            0);
        EXPECT_EQ(ours, ofOther);
        const JniCounter counter(env);
        disposeClassProxies(env);
        EXPECT_EQ(counter.calls(&JNINativeInterface_::DeleteWeakGlobalRef), 1) << "registered once";
    }
}

}  // namespace nativevrl::test::classproxies
