#pragma once

#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/zipdirectory.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vrlkrt {

/// What an archive may cost at most, whatever it declares. In bytes, except the number of entries.
struct ArchiveLimits {
    std::uint64_t archiveBytes = std::uint64_t{1} << 31;
    std::uint64_t entries = 4096;
    std::uint64_t manifestBytes = std::uint64_t{1} << 20;
    std::uint64_t fileBytes = std::uint64_t{1} << 29;   ///< of one file, unpacked
    std::uint64_t totalBytes = std::uint64_t{1} << 30;  ///< of all files together, unpacked
};

/// Where the files of an archive go as they are read. Calls come in the order of the archive:
/// beginFile, data any number of times, endFile; the next file. endFile is called only for a file that matched
/// its size and digest.
class ArchiveSink {
public:
    virtual ~ArchiveSink() = default;
    virtual void beginFile(const std::string& path) = 0;
    virtual void data(const char* bytes, std::size_t count) = 0;
    virtual void endFile() = 0;
};

/// A component archive in memory. Making one reads the manifest and the headers of all entries and refuses what is
/// not safe or does not fit the manifest; contents are unpacked and compared with their digests by readFiles.
/// Failures are vrlBaseException, naming the entry and what is wrong with it. Immutable, so free to be shared.
class ComponentArchive {
public:
    /// `bytes` is shared, never null.
    explicit ComponentArchive(std::shared_ptr<const std::string> bytes, const ArchiveLimits& limits = ArchiveLimits());

    const Manifest& manifest() const { return manifest_; }
    /// component.json as it stands in the archive.
    const std::string& manifestBytes() const { return manifestBytes_; }
    /// SHA-256 of the whole archive.
    const std::string& digest() const { return digest_; }
    /// Size of each file, component.json aside, by its path.
    const std::map<std::string, std::uint64_t>& files() const { return files_; }
    /// Entry path of the shared object for the platform that this process runs on; throws when there is none.
    const std::string& hostLibrary() const;
    /// Throws unless the component was built for the abi of this runtime.
    void requireAbi() const;

    /// Unpacks every file but component.json into the sink, comparing sizes and digests on the way.
    void readFiles(ArchiveSink& sink) const;
    /// Reads every file as readFiles does, for the checks alone, and refuses a library that is no shared object of its
    /// platform or not a whole one.
    void verify() const;

private:
    void readHeaders();
    void compareWithManifest() const;

    std::shared_ptr<const std::string> bytes_;
    ArchiveLimits limits_;
    std::vector<ZipEntry> entries_;  ///< their contents are in bytes_
    std::string digest_;
    std::string manifestBytes_;
    Manifest manifest_;
    std::map<std::string, std::uint64_t> files_;
};

}  // namespace vrlkrt
