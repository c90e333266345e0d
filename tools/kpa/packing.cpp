#include "packing.h"

#include "zipwriter.h"

#include "krt/component.h"
#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/manifest.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace kpa {
namespace {

namespace fs = std::filesystem;

/// Entry path to content.
using Files = std::map<std::string, std::string>;

std::string systemError(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + std::strerror(errno);
}

Files collectFiles(const std::string& folder, const std::string& skippedFile) {
    if (!fs::is_directory(folder)) {
        throw std::runtime_error(folder + " is not a folder");
    }
    std::error_code missing;
    Files files;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder)) {
        const std::string path = item.path().lexically_relative(folder).generic_string();
        if (item.is_symlink()) {
            throw std::runtime_error(item.path().string() + " is a link; an archive holds files only");
        }
        if (item.is_directory() || (!skippedFile.empty() && fs::equivalent(item.path(), skippedFile, missing))) {
            continue;
        }
        if (!item.is_regular_file()) {
            throw std::runtime_error(item.path().string() + " is not a file");
        }
        const std::string problem = vrlkrt::entryPathProblem(path);
        if (!problem.empty()) {
            throw std::runtime_error(item.path().string() + " can't be packed: " + problem);
        }
        files[path] = readFile(item.path().string());
    }
    return files;
}

void addLibraries(Files& files, vrlkrt::Manifest& manifest, const std::map<std::string, std::string>& libraries) {
    for (const auto& library : libraries) {
        const std::string& platform = library.first;
        const std::string entry = "lib/" + platform + "/" + fs::path(library.second).filename().string();
        if (!manifest.libraries.emplace(platform, entry).second) {
            throw std::runtime_error("component.json names a library for " + platform +
                                     " already: " + manifest.libraries[platform]);
        }
        if (const std::string problem = vrlkrt::entryPathProblem(entry); !problem.empty()) {
            throw std::runtime_error(library.second + " can't be packed as " + entry + ": " + problem);
        }
        if (!files.emplace(entry, readFile(library.second)).second) {
            throw std::runtime_error("the folder has a file " + entry + ", where the library for " + platform +
                                     " would go");
        }
    }
    if (manifest.libraries.empty()) {
        throw std::runtime_error("there is no library for any platform: name one with --library PLATFORM=FILE");
    }
}

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, 65536> block;
    std::string bytes;
    while (file.read(block.data(), block.size()) || file.gcount() > 0) {
        bytes.append(block.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error(systemError("can't read", path));
    }
    return bytes;
}

void writeFile(const std::string& path, const std::string& bytes) {
    const std::string temporary = path + ".part" + std::to_string(getpid());
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file || std::rename(temporary.c_str(), path.c_str()) != 0) {
        const std::string problem = systemError("can't write", path);
        std::error_code ignored;
        fs::remove(temporary, ignored);
        throw std::runtime_error(problem);
    }
}

std::string packFolder(const std::string& folder, const std::map<std::string, std::string>& libraries,
                       const std::string& skippedFile) {
    Files files = collectFiles(folder, skippedFile);
    const auto author = files.find(vrlkrt::manifestEntry);
    if (author == files.end()) {
        throw std::runtime_error(folder + " has no " + vrlkrt::manifestEntry);
    }
    vrlkrt::Manifest manifest = vrlkrt::parseAuthorManifest(author->second);
    files.erase(author);
    manifest.abi = KRT_ABI;
    addLibraries(files, manifest, libraries);
    for (const auto& file : files) {
        manifest.digests[file.first] = vrlkrt::sha256Hex(file.second);
    }

    ZipWriter zip;
    zip.add(vrlkrt::manifestEntry, vrlkrt::manifestText(manifest));
    for (const auto& file : files) {
        zip.add(file.first, file.second);
    }
    std::string bytes = zip.finish();

    // What could not be read back is not written at all.
    vrlkrt::ComponentArchive(std::make_shared<const std::string>(bytes)).verify();
    return bytes;
}

}  // namespace kpa
