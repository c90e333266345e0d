#include "vrlkrt/run/componentlibrary.h"

#include "vrlkrt/archive/elfcheck.h"
#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/printable.h"

#include "vrlbase/exceptions.h"

#include <dlfcn.h>
#include <link.h>

#include <map>
#include <mutex>
#include <optional>

namespace vrlkrt {

namespace {

constexpr int mode = RTLD_NOW | RTLD_LOCAL;

/// The file that the loader has under each spelling of a path.
struct MappedFiles {
    std::mutex mutex;
    std::map<std::string, FileState> bySpelling;
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
    const std::optional<FileState> state = fileState(file);
    if (!state) {
        return dlopen(file.c_str(), mode);
    }
    MappedFiles& mapped = mappedFiles();
    const std::lock_guard<std::mutex> lock(mapped.mutex);
    std::string spelling = file;
    while (void* known = dlopen(spelling.c_str(), mode | RTLD_NOLOAD)) {
        if (mapped.bySpelling.try_emplace(spelling, *state).first->second.isSameFile(*state)) {
            return known;
        }
        dlclose(known);
        spelling.insert(spelling.rfind('/') + 1, 1, '/');
    }
    void* library = dlopen(spelling.c_str(), mode);
    if (library != nullptr) {
        mapped.bySpelling.insert_or_assign(spelling, *state);
    }
    return library;
}

/// Throws when the file is another one than it was when its content was compared.
void requireUnchanged(const std::string& component, const std::string& file, const std::optional<FileState>& state) {
    if (state && !(fileState(file) == state)) {
        throw Norvane::vrl::vrlBaseException("component " + component + ": the library " + printable(file) +
                                             " was changed after its content was compared with its digest");
    }
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

ComponentLibrary::ComponentLibrary(const std::string& component, const std::string& file,
                                   const std::optional<FileState>& state) {
    const std::string words = "component " + component + ": the library " + printable(file);
    if (const std::string problem = elfProblemOfFile(file, hostPlatform()); !problem.empty()) {
        throw Norvane::vrl::vrlBaseException(words + " " + problem);
    }
    requireUnchanged(component, file, state);
    library_.reset(mapFile(file));
    if (library_ == nullptr) {
        const char* reason = dlerror();
        throw Norvane::vrl::vrlBaseException(
            words + " can't be loaded: " + (reason == nullptr ? "no reason given" : printable(reason)));
    }
    requireUnchanged(component, file, state);
}

void ComponentLibrary::Close::operator()(void* library) const noexcept { dlclose(library); }

ComponentLibrary::~ComponentLibrary() {
    if (pinned_) {
        static_cast<void>(library_.release());
    }
}

krtEntry ComponentLibrary::entry(const std::string& symbol) const {
    void* address = dlsym(library_.get(), symbol.c_str());
    return address != nullptr && isOwnFunction(library_.get(), address) ? reinterpret_cast<krtEntry>(address) : nullptr;
}

}  // namespace vrlkrt
