#include "support/jvm.h"

#include "entry/onload.h"

#include <string>
#include <vector>

namespace nativevrl::bench {

JNIEnv* startJvm() {
    std::string classPath = "-Djava.class.path=" LOOMKIT_BENCH_CLASS_PATH;
    std::string heap = "-Xmx2g";
    std::vector<JavaVMOption> options = {{classPath.data(), nullptr}, {heap.data(), nullptr}};
    JavaVMInitArgs arguments = {};
    arguments.version = JNI_VERSION_1_8;
    arguments.nOptions = static_cast<jint>(options.size());
    arguments.options = options.data();
    JavaVM* vm = nullptr;
    JNIEnv* env = nullptr;
    if (JNI_CreateJavaVM(&vm, reinterpret_cast<void**>(&env), &arguments) != JNI_OK) {
        return nullptr;
    }
    JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(vm);
    return env;
}

}  // namespace nativevrl::bench
