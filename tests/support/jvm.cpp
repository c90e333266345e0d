#include "support/jvm.h"

#include "entry/onload.h"
#include "support/smallstack.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace nativevrl::test {

namespace {

JavaVM* theVm = nullptr;

/// Null when the virtual machine doesn't start; it has said why by then.
JNIEnv* createVm() {
    std::vector<std::string> texts = {
        "-Xcheck:jni",
        "-Xss4m",
        "-Djava.class.path=" LOOMKIT_TEST_CLASS_PATH,
        "-Dloomkit.native.dir=" LOOMKIT_TEST_NATIVE_DIR,
    };
    std::vector<JavaVMOption> options;
    for (auto& text : texts) {
        options.push_back({text.data(), nullptr});
    }
    JavaVMInitArgs arguments = {};
    arguments.version = JNI_VERSION_1_8;
    arguments.nOptions = static_cast<jint>(options.size());
    arguments.options = options.data();
    JNIEnv* env = nullptr;
    return JNI_CreateJavaVM(&theVm, reinterpret_cast<void**>(&env), &arguments) == JNI_OK ? env : nullptr;
}

/// Initialises the class of the natives, which loads the library as an application would. The virtual machine finds
/// it linked into this program and calls JNI_OnLoad_loomkit below.
bool loadLibrary(JNIEnv* env) {
    jclass natives = env->FindClass("com/norvane/toolbox/loomkit/internal/NVKRT");
    if (natives != nullptr) {
        env->GetStaticMethodID(natives, "lock", "()V");
    }
    if (env->ExceptionCheck() != JNI_FALSE) {
        env->ExceptionDescribe();
        return false;
    }
    env->DeleteLocalRef(natives);
    return true;
}

void runAttached(const std::function<void(JNIEnv*)>& body) {
    JNIEnv* env = nullptr;
    ASSERT_EQ(theVm->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr), JNI_OK);
    body(env);
    theVm->DetachCurrentThread();
}

}  // namespace

JavaVM* javaVm() { return theVm; }

JNIEnv* currentEnv() {
    JNIEnv* env = nullptr;
    theVm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_8);
    return env;
}

void onAttachedThread(const std::function<void(JNIEnv*)>& body) {
    onUnknownThread([&] { runAttached(body); });
}

void onSmallStack(std::size_t bytes, const std::function<void(JNIEnv*)>& body) {
    loomkit::test::runOnStack(bytes, [&] { runAttached(body); });
}

void onUnknownThread(const std::function<void()>& body) { std::thread(body).join(); }

}  // namespace nativevrl::test

extern "C" {

/// The virtual machine takes a library that is linked into the program for the one to be loaded when the program
/// has this function; such a library answers with 1.8 at least.
JNIEXPORT jint JNICALL JNI_OnLoad_loomkit(JavaVM* vm, void*) {
    JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(vm);
    return JNI_VERSION_1_8;
}

/// Read by the address sanitizer: the virtual machine uses SIGSEGV in its daily work and never frees what it holds.
JNIEXPORT const char* __asan_default_options() { return "handle_segv=0:allow_user_segv_handler=1:detect_leaks=0"; }
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    JNIEnv* env = nativevrl::test::createVm();
    if (env == nullptr || !nativevrl::test::loadLibrary(env)) {
        std::fputs("The virtual machine of the tests did not start.\n", stderr);
        return 1;
    }
    return RUN_ALL_TESTS();
}
