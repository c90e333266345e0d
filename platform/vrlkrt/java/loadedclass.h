#pragma once

#include <jni.h>

namespace vrlkrt {

/// Stands around a load of the integration class through a configuration. The class comes by way of Java, which gets a
/// global reference as the result of a native method and so never deletes it. Unless that is done here, when the load
/// is over, the reference keeps the class loader for good.
class LoadedClass {
public:
    explicit LoadedClass(JNIEnv* env) noexcept;
    ~LoadedClass();
    LoadedClass(const LoadedClass&) = delete;
    LoadedClass& operator=(const LoadedClass&) = delete;

    /// Tells the innermost load of this thread, if there is one, of the reference that Java gets.
    static void handOut(jclass global) noexcept;

private:
    JNIEnv* env_;
    LoadedClass* outer_;
    jclass global_ = nullptr;
};

}  // namespace vrlkrt
