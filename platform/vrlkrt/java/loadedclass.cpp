#include "vrlkrt/java/loadedclass.h"

namespace vrlkrt {

namespace {

thread_local LoadedClass* innermost = nullptr;

}  // namespace

LoadedClass::LoadedClass(JNIEnv* env) noexcept : env_(env), outer_(innermost) { innermost = this; }

LoadedClass::~LoadedClass() {
    innermost = outer_;
    if (global_ != nullptr) {
        env_->DeleteGlobalRef(global_);
    }
}

void LoadedClass::handOut(jclass global) noexcept {
    if (innermost != nullptr && innermost->global_ == nullptr) {
        innermost->global_ = global;
    }
}

}  // namespace vrlkrt
