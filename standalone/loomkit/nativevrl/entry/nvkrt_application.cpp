/// Natives that start and stop the runtime and ask about it.

#include "boundary/boundary.h"
#include "entry/javastringargv.h"
#include "entry/startup.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <cstdlib>

using namespace nativevrl;

namespace {

jboolean startRuntime(JNIEnv* env, jobjectArray options) {
    return runtimeFacing<jboolean>(env, "An error occurred while initializing the KRT.\n", JNI_FALSE, [&] {
        JavaStringArgv argv(env, options);
        vrlInitializeApplicationImpl(argv.argv(), argv.count());
        return static_cast<jboolean>(JNI_TRUE);
    });
}

jobject environmentValue(JNIEnv* env, jstring name) {
    JStringProxy nameString(env, name);
    // The platform gets the name as it is, a null one too.
    const char* value = std::getenv(nameString.getStringUTFChars());
    return NewJStringProxy(env, value == nullptr ? "" : value).detach();
}

}  // namespace

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlInitializeApplication(JNIEnv* env, jclass,
                                                                                  jobjectArray options) {
    return guarded<jboolean>(env, JNI_FALSE, [&] {
        configureRuntimeOnce(env);
        return startRuntime(env, options);
    });
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlTerminateApplication(JNIEnv* env, jclass) {
    return runtimeFacing<jboolean>(env, "An error occurred while Disposing the KRT.\n", JNI_FALSE, [] {
        vrlTerminateApplicationImpl();
        return static_cast<jboolean>(JNI_TRUE);
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_lock(JNIEnv*, jclass) { vrlAcquireMutex(); }

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_unlock(JNIEnv*, jclass) { vrlReleaseMutex(); }

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsStandaloneMode(JNIEnv*, jclass) {
    return static_cast<jboolean>(vrlIsStandaloneMode());
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsKcc(JNIEnv*, jclass) {
    return static_cast<jboolean>(vrlIsKcc());
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsKRTInitialized(JNIEnv*, jclass) {
    return static_cast<jboolean>(vrlIsKRTInitialized());
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsJVMEnabled(JNIEnv*, jclass) {
    return static_cast<jboolean>(vrlIsJVMEnabled());
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlIsNoDisplaySet(JNIEnv*, jclass) {
    return static_cast<jboolean>(vrlIsNoDisplaySet());
}

jstring Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlGetLogFileName(JNIEnv* env, jclass) {
    return env->NewStringUTF(vrlGetLogFileName());
}

// Under the long form of its name, which a virtual machine looks for when the plain one is not there.
extern "C" JNIEXPORT jstring JNICALL
Java_com_norvane_toolbox_loomkit_internal_NVKRT_getenv__Ljava_lang_String_2(JNIEnv* env, jclass, jstring name) {
    return guarded<jstring>(env, nullptr, [&] { return static_cast<jstring>(environmentValue(env, name)); });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlAddCanonicalPathMacro(JNIEnv* env, jclass, jstring first,
                                                                              jstring second) {
    jboolean firstIsCopy = JNI_FALSE;
    jboolean secondIsCopy = JNI_FALSE;
    const char* firstChars = env->GetStringUTFChars(first, &firstIsCopy);
    const char* secondChars = env->GetStringUTFChars(second, &secondIsCopy);
    vrlAddCanonicalPathMacro(firstChars, secondChars);
    if (firstIsCopy == JNI_TRUE) {
        env->ReleaseStringUTFChars(first, firstChars);
    }
    if (secondIsCopy == JNI_TRUE) {
        env->ReleaseStringUTFChars(second, secondChars);
    }
}
