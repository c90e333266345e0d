#include "archivetesting.h"

#include <sys/stat.h>

#include <set>

namespace fs = std::filesystem;

std::map<std::string, std::string> filesBelow(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder)) {
        if (item.is_regular_file()) {
            files[item.path().lexically_relative(folder).string()] = readText(item.path().string());
        }
    }
    return files;
}

std::string namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const fs::directory_entry& item : fs::directory_iterator(folder)) {
        names.insert(item.path().filename().string());
    }
    std::string text;
    for (const std::string& name : names) {
        text += name + " ";
    }
    return text;
}

std::uint64_t inodeOf(const std::string& path) {
    struct stat state {};
    return stat(path.c_str(), &state) == 0 ? state.st_ino : 0;
}
