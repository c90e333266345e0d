#include "packing.h"

#include "files.h"
#include "zipwriter.h"

#include "krt/component.h"
#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/manifest.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace kpa {
namespace {

namespace fs = std::filesystem;

/// Entry path to content.
using Files = std::map<std::string, std::string>;

std::string readComponentFile(const std::string& path) { return readFile(path, vrlkrt::ArchiveLimits().fileBytes); }

/// The path that an item of the folder gets in the archive.
std::string entryPathOf(const fs::directory_entry& item, const std::string& folder) {
    std::string path = item.path().lexically_relative(folder).generic_string();
    if (item.is_symlink()) {
        throw FileFailure("", item.path().string(), " is a link; an archive holds files only");
    }
    if (!item.is_regular_file()) {
        throw FileFailure("", item.path().string(), " is not a file");
    }
    if (const std::string problem = vrlkrt::entryPathProblem(path); !problem.empty()) {
        throw FileFailure("", item.path().string(), " can't be packed: " + problem);
    }
    return path;
}

Files collectFiles(const std::string& folder, const std::string& skippedFile) {
    if (!fs::is_directory(folder)) {
        throw FileFailure("", folder, " is not a folder");
    }
    std::error_code missing;
    std::uint64_t total = 0;
    const std::uint64_t limit = vrlkrt::ArchiveLimits().totalBytes;
    Files files;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder)) {
        const bool isFolder = item.is_directory() && !item.is_symlink();
        if (isFolder || (!skippedFile.empty() && fs::equivalent(item.path(), skippedFile, missing))) {
            continue;
        }
        std::string& content = files[entryPathOf(item, folder)];
        content = readComponentFile(item.path().string());
        total += content.size();
        if (total > limit) {
            throw FileFailure("", folder, " has more than the " + std::to_string(limit) + " bytes that are allowed");
        }
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
            throw FileFailure("", library.second, " can't be packed as the library for " + platform + ": " + problem);
        }
        if (!files.emplace(entry, readComponentFile(library.second)).second) {
            throw std::runtime_error("the folder has a file " + entry + ", where the library for " + platform +
                                     " would go");
        }
    }
    if (manifest.libraries.empty()) {
        throw std::runtime_error("there is no library for any platform: name one with --library PLATFORM=FILE");
    }
}

}  // namespace

std::string packFolder(const std::string& folder, const std::map<std::string, std::string>& libraries,
                       const std::string& skippedFile) {
    Files files = collectFiles(folder, skippedFile);
    const auto author = files.find(vrlkrt::manifestEntry);
    if (author == files.end()) {
        throw FileFailure("", folder, std::string(" has no ") + vrlkrt::manifestEntry);
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
