#include "jzi/javaarray.h"
#include "vrlbase/vrlbase.h"

namespace jzi {

JavaVM* javaVM() {
    const boost::shared_ptr<JavaVMConfig> config = vrlGetJavaVMConfig();
    return config ? config->getJavaVM() : nullptr;
}

ThreadEnv::ThreadEnv(JavaVM* vm) : vm_(vm) {
    void* env = nullptr;
    if (vm == nullptr) {
        return;
    }
    jint status = vm->GetEnv(&env, JNI_VERSION_1_4);
    if (status == JNI_EDETACHED) {
        status = vm->AttachCurrentThread(&env, nullptr);
        attachedHere_ = status == JNI_OK;
    }
    env_ = status == JNI_OK ? static_cast<JNIEnv*>(env) : nullptr;
}

ThreadEnv::~ThreadEnv() {
    if (attachedHere_) {
        vm_->DetachCurrentThread();
    }
}

JNIEnv* knownThreadEnv() {
    void* env = nullptr;
    JavaVM* vm = javaVM();
    if (vm == nullptr || vm->GetEnv(&env, JNI_VERSION_1_4) != JNI_OK) {
        return nullptr;
    }
    return static_cast<JNIEnv*>(env);
}

}  // namespace jzi
