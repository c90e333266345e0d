#include "entry/onload.h"
#include "entry/librarystate.h"
#include "proxies/jobjectproxy.h"
#include "support/jvmtest.h"

namespace nativevrl::test::onload {

/// Leaves the library loaded, as the other tests expect it.
class OnLoad : public JvmTest {
protected:
    void TearDown() override {
        JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(javaVm());
        JvmTest::TearDown();
    }

    /// Weak references of class proxies that stand when `body` has run, where one stood before.
    template <typename Body>
    int proxiesLeftBy(Body body) {
        disposeClassProxies(env);
        const JniCounter counter(env);
        JObjectClassProxy::instance(env);
        body();
        return counter.weakReferences();
    }
};

TEST_F(OnLoad, StoresTheMachineAndTouchesNoClass) {
    sharedEnvInjector.reset();
    sharedJavaVM = nullptr;
    const JniCounter counter(env);
    EXPECT_EQ(JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(javaVm()), 0x10004);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 0);
    EXPECT_EQ(sharedJavaVM, javaVm());
    ASSERT_NE(sharedEnvInjector, nullptr);
}

TEST_F(OnLoad, UnloadReleasesTheClassesAndTheInjector) {
    const auto held = sharedEnvInjector;
    EXPECT_EQ(proxiesLeftBy([] { JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload(javaVm()); }), 0);
    EXPECT_EQ(sharedEnvInjector, nullptr);
    EXPECT_EQ(sharedJavaVM, javaVm());
    EXPECT_EQ(held->run([](JNIEnv* given) { return given; }), env) << "a copy that is held lives on";
}

TEST_F(OnLoad, UnloadOnAnUnknownThreadReleasesNoClass) {
    EXPECT_EQ(proxiesLeftBy(
                  [] { onUnknownThread([] { JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload(javaVm()); }); }),
              1);
    EXPECT_EQ(sharedEnvInjector, nullptr);
    const JniCounter counter(env);
    JObjectClassProxy::instance(env);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 0) << "the slot stayed filled";
}

}  // namespace nativevrl::test::onload
