/// The entry points that a virtual machine calls by itself; they pass on to the library's own. The virtual machine
/// finds the natives in the library beside this one, so the entry points must be those of that very copy: by its name
/// alone, one that a host program has linked might be called.

#include "entry/onload.h"
#include "vrlkrt/unload.h"

#include <dlfcn.h>
#include <jni.h>

#include <string>
#include <string_view>

namespace {

/// The path of the library beside this one.
std::string libraryPath() {
    static const char here = 0;
    Dl_info self{};
    dladdr(&here, &self);
    const std::string_view path = self.dli_fname == nullptr ? "" : self.dli_fname;
    return std::string(path.substr(0, path.rfind('/') + 1)) + "libnativevrl.so";
}

/// The entry point of that library; null when it isn't there.
template <typename Function>
Function* entryPoint(const char* name) {
    void* library = dlopen(libraryPath().c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) {
        return nullptr;
    }
    auto* function = reinterpret_cast<Function*>(dlsym(library, name));
    // This library links it, so it stays.
    dlclose(library);
    return function;
}

}  // namespace

JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void*) {
    auto* onLoad = entryPoint<decltype(JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad)>(
        "JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad");
    return onLoad == nullptr ? JNI_ERR : onLoad(vm);
}

JNIEXPORT void JNICALL JNI_OnUnload(JavaVM* vm, void*) {
    auto* onUnload = entryPoint<decltype(JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload)>(
        "JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload");
    if (onUnload != nullptr) {
        vrlForgetLibrary(reinterpret_cast<const void*>(onUnload));
        onUnload(vm);
    }
}
