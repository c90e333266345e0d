#include "archivetesting.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace fs = std::filesystem;

TestFolder::TestFolder() : path_((fs::temp_directory_path() / "loomkit-archive-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("can't make a folder for the test");
    }
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void writeText(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        throw std::runtime_error("can't write " + path);
    }
}

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

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
