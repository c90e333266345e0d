#include "vrlkrt/archive/archive.h"

#include "vrlkrt/archive/archivefailure.h"
#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/elfcheck.h"
#include "vrlkrt/archive/zipcontent.h"

#include "krt/component.h"

#include <algorithm>
#include <utility>

namespace vrlkrt {
namespace {

void requireSize(const ZipEntry& entry, std::uint64_t limit) {
    if (entry.size > limit) {
        failEntry(entry.path,
                  "it has " + std::to_string(entry.size) + " bytes, and " + std::to_string(limit) + " are allowed");
    }
}

/// Keeps the libraries, to look at them when they are whole, and drops all other content.
class CheckingSink : public ArchiveSink {
public:
    explicit CheckingSink(const Manifest& manifest) : libraries_(manifest.libraries) {}

    void beginFile(const std::string& path) override {
        path_ = path;
        content_.clear();
        isLibrary_ = std::any_of(libraries_.begin(), libraries_.end(), [&](const auto& l) { return l.second == path; });
    }
    void data(const char* bytes, std::size_t count) override {
        if (isLibrary_) {
            content_.append(bytes, count);
        }
    }
    void endFile() override {
        for (const auto& [platform, path] : libraries_) {
            const std::string problem = path == path_ ? elfProblem(content_, platform) : "";
            if (!problem.empty()) {
                failEntry(path, "it is the library for " + platform + ", but " + problem);
            }
        }
    }

private:
    const std::map<std::string, std::string>& libraries_;
    std::string path_;
    std::string content_;
    bool isLibrary_ = false;
};

/// No file may stand where another one needs a folder.
void requireNoFileAsFolder(const std::map<std::string, std::uint64_t>& files) {
    for (const auto& file : files) {
        const std::string& path = file.first;
        for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            if (files.count(path.substr(0, slash)) != 0 || path.substr(0, slash) == manifestEntry) {
                failEntry(path, "its folder '" + path.substr(0, slash) + "' is a file of the archive");
            }
        }
    }
}

}  // namespace

ComponentArchive::ComponentArchive(std::shared_ptr<const std::string> bytes, const ArchiveLimits& limits)
    : bytes_(std::move(bytes)), limits_(limits) {
    if (bytes_->size() > limits_.archiveBytes) {
        failArchive("The archive has " + std::to_string(bytes_->size()) + " bytes, and " +
                    std::to_string(limits_.archiveBytes) + " are allowed.");
    }
    readHeaders();
    manifest_ = parseManifest(manifestBytes_);
    compareWithManifest();
    digest_ = sha256Hex(*bytes_);
}

void ComponentArchive::readHeaders() {
    entries_ = readZipDirectory(*bytes_, limits_.entries);
    std::uint64_t total = 0;
    bool manifestSeen = false;
    for (const ZipEntry& entry : entries_) {
        const std::string problem = entryPathProblem(entry.path);
        if (!problem.empty()) {
            failEntry(entry.path, problem);
        }
        const bool isManifest = entry.path == manifestEntry;
        requireSize(entry, isManifest ? limits_.manifestBytes : limits_.fileBytes);
        total += entry.size;
        if (total > limits_.totalBytes) {
            failEntry(entry.path, "with it the files have more than the " + std::to_string(limits_.totalBytes) +
                                      " bytes that are allowed together");
        }
        if (isManifest ? manifestSeen : !files_.emplace(entry.path, entry.size).second) {
            failEntry(entry.path, "it is there twice");
        }
        if (isManifest) {
            manifestSeen = true;
            readZipContent(entry, [&](const char* bytes, std::size_t n) { manifestBytes_.append(bytes, n); });
        }
    }
    if (!manifestSeen) {
        failArchive(std::string("The archive has no ") + manifestEntry + ".");
    }
    requireNoFileAsFolder(files_);
}

void ComponentArchive::compareWithManifest() const {
    for (const auto& file : files_) {
        if (manifest_.digests.count(file.first) == 0) {
            failEntry(file.first, "component.json has no SHA-256 of it");
        }
    }
    for (const auto& digest : manifest_.digests) {
        if (files_.count(digest.first) == 0) {
            failEntry(digest.first, "component.json lists it, but it is not in the archive");
        }
    }
    for (const auto& library : manifest_.libraries) {
        if (files_.count(library.second) == 0) {
            failEntry(library.second,
                      "component.json names it as the library for " + library.first + ", but it is not in the archive");
        }
    }
}

const std::string& ComponentArchive::hostLibrary() const {
    const auto library = manifest_.libraries.find(hostPlatform());
    if (library != manifest_.libraries.end()) {
        return library->second;
    }
    std::string platforms;
    for (const auto& other : manifest_.libraries) {
        platforms += (platforms.empty() ? "" : ", ") + other.first;
    }
    failArchive("component.json: the component '" + manifest_.name + "' has no library for " + hostPlatform() +
                "; it has " + (platforms.empty() ? "none at all" : "one for " + platforms) + ".");
}

void ComponentArchive::requireAbi() const {
    if (manifest_.abi != KRT_ABI) {
        failArchive("component.json: the component '" + manifest_.name + "' was built for abi " +
                    std::to_string(manifest_.abi) + ", and this runtime has abi " + std::to_string(KRT_ABI) + ".");
    }
}

void ComponentArchive::readFiles(ArchiveSink& sink) const {
    for (const ZipEntry& entry : entries_) {
        if (entry.path == manifestEntry) {
            continue;
        }
        sink.beginFile(entry.path);
        Sha256 digest;
        readZipContent(entry, [&](const char* bytes, std::size_t count) {
            digest.update(bytes, count);
            sink.data(bytes, count);
        });
        if (digest.hex() != manifest_.digests.at(entry.path)) {
            failEntry(entry.path, "its content does not match its SHA-256 in component.json");
        }
        sink.endFile();
    }
}

void ComponentArchive::verify() const {
    CheckingSink sink(manifest_);
    readFiles(sink);
}

}  // namespace vrlkrt
