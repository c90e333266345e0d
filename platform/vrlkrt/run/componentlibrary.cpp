#include "vrlkrt/run/componentlibrary.h"

#include "vrlbase/exceptions.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>

#include <map>
#include <mutex>
#include <utility>

namespace vrlkrt {

namespace {

constexpr int mode = RTLD_NOW | RTLD_LOCAL;

/// The file that the loader has under each spelling of a path: its device and its number there.
struct MappedFiles {
    std::mutex mutex;
    std::map<std::string, std::pair<dev_t, ino_t>> bySpelling;
};

/// Left to the process's end, as the libraries are.
MappedFiles& mappedFiles() {
    static MappedFiles& instance = *new MappedFiles;
    return instance;
}

/// Maps a file; null when the loader can't. The loader takes a path that it knows for the library that it has under
/// it, even where another file is in its place by now, and few libraries ever leave the process: one with a symbol
/// that is unique in it never does. Such a path is spelled with one more slash, until it is new or leads to the file.
void* mapFile(const std::string& file) {
    struct stat state {};
    if (stat(file.c_str(), &state) != 0) {
        return dlopen(file.c_str(), mode);
    }
    const std::pair<dev_t, ino_t> identity(state.st_dev, state.st_ino);
    MappedFiles& mapped = mappedFiles();
    const std::lock_guard<std::mutex> lock(mapped.mutex);
    std::string spelling = file;
    while (void* known = dlopen(spelling.c_str(), mode | RTLD_NOLOAD)) {
        if (mapped.bySpelling.try_emplace(spelling, identity).first->second == identity) {
            return known;
        }
        dlclose(known);
        spelling.insert(spelling.rfind('/') + 1, 1, '/');
    }
    void* library = dlopen(spelling.c_str(), mode);
    if (library != nullptr) {
        mapped.bySpelling[spelling] = identity;
    }
    return library;
}

/// Whether an address lies in the library, and is not that of a variable.
bool isOwnFunction(void* library, void* address) {
    const link_map* own = nullptr;
    void* owner = nullptr;
    void* symbol = nullptr;
    Dl_info info{};
    if (dlinfo(library, RTLD_DI_LINKMAP, &own) != 0 || dladdr1(address, &info, &owner, RTLD_DL_LINKMAP) == 0 ||
        owner != own) {
        return false;
    }
    dladdr1(address, &info, &symbol, RTLD_DL_SYMENT);
    return symbol == nullptr || ELF64_ST_TYPE(static_cast<const ElfW(Sym)*>(symbol)->st_info) != STT_OBJECT;
}

}  // namespace

ComponentLibrary::ComponentLibrary(const std::string& component, const std::string& file) : library_(mapFile(file)) {
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
    void* address = dlsym(library_, symbol.c_str());
    return address != nullptr && isOwnFunction(library_, address) ? reinterpret_cast<krtEntry>(address) : nullptr;
}

}  // namespace vrlkrt
