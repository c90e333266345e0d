#include "text/unicode.h"
#include "vrlbase/runtime.h"

#include <map>
#include <mutex>
#include <new>
#include <string>
#include <utility>

namespace {

struct PathMacros {
    std::mutex mutex;
    std::map<std::string, std::string> paths;
};

/// Left to the process's end, as everything that threads of the virtual machine may still reach.
PathMacros& pathMacros() {
    static PathMacros& instance = *new PathMacros;
    return instance;
}

}  // namespace

void vrlSetPathMacro(const char* name, const char* path) {
    if (name == nullptr || path == nullptr || *name == '\0') {
        return;
    }
    try {
        std::string value(path);
        PathMacros& macros = pathMacros();
        const std::lock_guard<std::mutex> lock(macros.mutex);
        macros.paths[name].swap(value);
    } catch (const std::bad_alloc&) {
        vrlWriteLog("A path macro was dropped: there is no memory for it\n");
    }
}

std::string vrlExpandPathMacros(const std::string& path) {
    PathMacros& macros = pathMacros();
    const std::lock_guard<std::mutex> lock(macros.mutex);
    std::string expanded;
    std::size_t position = 0;
    while (position < path.size()) {
        const std::size_t start = path.find("$(", position);
        const std::size_t end = start == std::string::npos ? std::string::npos : path.find(')', start);
        if (end == std::string::npos) {
            break;
        }
        const auto macro = macros.paths.find(path.substr(start + 2, end - start - 2));
        if (macro == macros.paths.end()) {
            expanded.append(path, position, start + 2 - position);
            position = start + 2;
        } else {
            expanded.append(path, position, start - position) += macro->second;
            position = end + 1;
        }
    }
    return expanded.append(path, position, std::string::npos);
}

std::string vrlFileSystemPath(std::string path) { return text::withPairsJoined(std::move(path)); }
