#include "vrlkrt/archive/archive.h"

#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"

#include "krt/component.h"
#include "vrlbase/exceptions.h"

#include <archive.h>
#include <archive_entry.h>

#include <array>
#include <memory>
#include <utility>

namespace vrlkrt {
namespace {

[[noreturn]] void fail(const std::string& problem) { throw Norvane::vrl::vrlBaseException(printableText(problem)); }

[[noreturn]] void failEntry(const std::string& path, const std::string& problem) {
    fail("Archive entry '" + path + "': " + problem + ".");
}

/// The archive as a sequence of entries. libarchive's reader of the central directory is the only one that is
/// let in: that of streams would trust local headers and take half an archive for a whole one.
class ZipReader {
public:
    explicit ZipReader(const std::string& bytes) : reader_(archive_read_new(), &archive_read_free) {
        if (!reader_ || archive_read_support_format_zip_seekable(reader_.get()) != ARCHIVE_OK ||
            archive_read_open_memory(reader_.get(), bytes.data(), bytes.size()) != ARCHIVE_OK) {
            fail("The archive is truncated or damaged: " + reason() + ".");
        }
    }

    /// False at the end.
    bool next() {
        const int result = archive_read_next_header(reader_.get(), &entry_);
        if (result == ARCHIVE_EOF) {
            return false;
        }
        if (result != ARCHIVE_OK && entry_ == nullptr) {
            fail("The archive is truncated or damaged: " + reason() + ".");
        }
        const char* path = archive_entry_pathname(entry_);
        path_ = path ? path : "";
        ++number_;
        if (result != ARCHIVE_OK) {
            // A path that the locale has no characters for comes as none.
            failEntry(path_.empty() ? "number " + std::to_string(number_) : path_,
                      "its header is damaged: " + reason());
        }
        return true;
    }

    const std::string& path() const { return path_; }
    archive_entry* entry() const { return entry_; }

    std::size_t read(char* target, std::size_t count) {
        const la_ssize_t got = archive_read_data(reader_.get(), target, count);
        if (got < 0) {
            failEntry(path_, "its content is damaged: " + reason());
        }
        return static_cast<std::size_t>(got);
    }

private:
    std::string reason() const {
        const char* text = reader_ ? archive_error_string(reader_.get()) : nullptr;
        std::string words = text ? text : "not enough memory";
        return words.erase(words.find_last_not_of('.') + 1);
    }

    std::unique_ptr<archive, int (*)(archive*)> reader_;
    archive_entry* entry_ = nullptr;
    std::string path_;
    std::uint64_t number_ = 0;
};

/// Tells at once what no zip reader needs to be asked for.
void requireZip(const std::string& bytes) {
    if (bytes.empty()) {
        fail("The archive is empty.");
    }
    if (bytes.compare(0, 2, "PK") != 0) {
        fail("The archive is not a zip file.");
    }
    constexpr std::size_t endRecordLength = 22;
    constexpr char endRecordSignature[] = "PK\5\6";
    const std::size_t endRecord = bytes.rfind(endRecordSignature);
    if (endRecord == std::string::npos || bytes.size() - endRecord < endRecordLength) {
        fail("The archive is truncated: its central directory is not there.");
    }
}

void requirePlainFile(const ZipReader& zip) {
    archive_entry* entry = zip.entry();
    if (archive_entry_is_encrypted(entry) != 0) {
        failEntry(zip.path(), "it is encrypted");
    }
    if (archive_entry_hardlink(entry) != nullptr) {
        failEntry(zip.path(), "it is a link; only files are allowed");
    }
    switch (archive_entry_filetype(entry)) {
        case AE_IFREG:
            return;
        case AE_IFLNK:
            failEntry(zip.path(), "it is a link; only files are allowed");
        case AE_IFDIR:
            failEntry(zip.path(), "it is a folder; only files are allowed");
        default:
            failEntry(zip.path(), "it is a device, pipe or socket; only files are allowed");
    }
}

std::uint64_t declaredSize(const ZipReader& zip, std::uint64_t limit) {
    if (archive_entry_size_is_set(zip.entry()) == 0 || archive_entry_size(zip.entry()) < 0) {
        failEntry(zip.path(), "it states no size");
    }
    const auto size = static_cast<std::uint64_t>(archive_entry_size(zip.entry()));
    if (size > limit) {
        failEntry(zip.path(),
                  "it has " + std::to_string(size) + " bytes, and " + std::to_string(limit) + " are allowed");
    }
    return size;
}

/// Reads one entry block by block, `consume(bytes, count)` each, and refuses one that is not of its declared size.
template <typename Consumer>
void readContent(ZipReader& zip, std::uint64_t size, Consumer consume) {
    std::array<char, 65536> block;
    std::uint64_t total = 0;
    while (const std::size_t count = zip.read(block.data(), block.size())) {
        total += count;
        if (total > size) {
            failEntry(zip.path(), "it has more than the " + std::to_string(size) + " bytes that it states");
        }
        consume(block.data(), count);
    }
    if (total != size) {
        failEntry(zip.path(),
                  "it has " + std::to_string(total) + " bytes, not the " + std::to_string(size) + " that it states");
    }
}

class DroppingSink : public ArchiveSink {
public:
    void beginFile(const std::string&) override {}
    void data(const char*, std::size_t) override {}
    void endFile() override {}
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
        fail("The archive has " + std::to_string(bytes_->size()) + " bytes, and " +
             std::to_string(limits_.archiveBytes) + " are allowed.");
    }
    requireZip(*bytes_);
    readHeaders();
    manifest_ = parseManifest(manifestBytes_);
    compareWithManifest();
    digest_ = sha256Hex(*bytes_);
}

void ComponentArchive::readHeaders() {
    ZipReader zip(*bytes_);
    std::uint64_t count = 0;
    std::uint64_t total = 0;
    bool manifestSeen = false;
    while (zip.next()) {
        if (++count > limits_.entries) {
            fail("The archive has more than the " + std::to_string(limits_.entries) + " entries that are allowed.");
        }
        requirePlainFile(zip);
        const std::string problem = entryPathProblem(zip.path());
        if (!problem.empty()) {
            failEntry(zip.path(), problem);
        }
        const bool isManifest = zip.path() == manifestEntry;
        const std::uint64_t size = declaredSize(zip, isManifest ? limits_.manifestBytes : limits_.fileBytes);
        total += size;
        if (total > limits_.totalBytes) {
            failEntry(zip.path(), "with it the files have more than the " + std::to_string(limits_.totalBytes) +
                                      " bytes that are allowed together");
        }
        if (isManifest ? manifestSeen : !files_.emplace(zip.path(), size).second) {
            failEntry(zip.path(), "it is there twice");
        }
        if (isManifest) {
            manifestSeen = true;
            readContent(zip, size, [&](const char* bytes, std::size_t n) { manifestBytes_.append(bytes, n); });
        }
    }
    if (!manifestSeen) {
        fail(std::string("The archive has no ") + manifestEntry + ".");
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
    fail("component.json: the component '" + manifest_.name + "' has no library for " + hostPlatform() + "; it has " +
         (platforms.empty() ? "none at all" : "one for " + platforms) + ".");
}

void ComponentArchive::requireAbi() const {
    if (manifest_.abi != KRT_ABI) {
        fail("component.json: the component '" + manifest_.name + "' was built for abi " +
             std::to_string(manifest_.abi) + ", and this runtime has abi " + std::to_string(KRT_ABI) + ".");
    }
}

void ComponentArchive::readFiles(ArchiveSink& sink) const {
    ZipReader zip(*bytes_);
    while (zip.next()) {
        if (zip.path() == manifestEntry) {
            continue;
        }
        sink.beginFile(zip.path());
        Sha256 digest;
        readContent(zip, files_.at(zip.path()), [&](const char* bytes, std::size_t count) {
            digest.update(bytes, count);
            sink.data(bytes, count);
        });
        if (digest.hex() != manifest_.digests.at(zip.path())) {
            failEntry(zip.path(), "its content does not match its SHA-256 in component.json");
        }
        sink.endFile();
    }
}

void ComponentArchive::verify() const {
    DroppingSink sink;
    readFiles(sink);
}

}  // namespace vrlkrt
