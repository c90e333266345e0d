#include "componentlibrary.h"

#include "vrlbase/exceptions.h"

#include <dlfcn.h>

namespace vrlkrt {

ComponentLibrary::ComponentLibrary(const std::string& component, const std::string& file)
    : library_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) {
        const char* reason = dlerror();
        throw Norvane::vrl::vrlBaseException("component " + component + ": the library " + file +
                                             " can't be loaded: " + (reason == nullptr ? "no reason given" : reason));
    }
}

ComponentLibrary::~ComponentLibrary() {
    if (!pinned_) {
        dlclose(library_);
    }
}

krtEntry ComponentLibrary::entry(const std::string& symbol) const {
    return reinterpret_cast<krtEntry>(dlsym(library_, symbol.c_str()));
}

}  // namespace vrlkrt
