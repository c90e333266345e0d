#include "jzi/javaarray.h"
#include "vrlbase/library.h"

#include <atomic>

namespace jzi {

JavaVM* javaVM() {
    // There is one in a process. Whoever told of it may be unloaded.
    static std::atomic<JavaVM*> known{nullptr};
    JavaVM* vm = known.load(std::memory_order_relaxed);
    if (vm == nullptr) {
        const boost::shared_ptr<JavaVMConfig> config = vrlAnyConfig();
        vm = config ? config->getJavaVM() : nullptr;
        known.store(vm, std::memory_order_relaxed);
    }
    return vm;
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
