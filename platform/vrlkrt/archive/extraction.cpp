#include "vrlkrt/archive/extraction.h"

#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/folderitems.h"
#include "vrlkrt/archive/trustedfolder.h"

#include "vrlbase/exceptions.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>

namespace vrlkrt {
namespace {

namespace fs = std::filesystem;

/// Writes the files of an archive below a folder.
class FolderSink : public ArchiveSink {
public:
    explicit FolderSink(std::string folder) : folder_(std::move(folder)) {}

    void beginFile(const std::string& path) override {
        path_ = folder_ + "/" + path;
        makeFolders(path_.substr(0, path_.rfind('/')));
        file_ = OpenFile(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
        if (!file_.isOpen()) {
            failPath("Can't make", path_, errno);
        }
    }

    void data(const char* bytes, std::size_t count) override {
        while (count > 0) {
            const ssize_t written = write(file_.get(), bytes, count);
            if (written < 0 && errno != EINTR) {
                failPath("Can't write", path_, errno);
            }
            const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
            bytes += done;
            count -= done;
        }
    }

    void endFile() override {
        if (!file_.close()) {
            failPath("Can't write", path_, errno);
        }
    }

private:
    std::string folder_;
    std::string path_;
    OpenFile file_;
};

bool isPlainFileOfSize(const std::string& path, std::uint64_t size) {
    struct stat state {};
    return lstat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode) &&
           static_cast<std::uint64_t>(state.st_size) == size;
}

/// "" where there is no file to be read.
std::string readWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

/// Absolute, without a separator at the end, links resolved where the folder exists.
std::string resolveFolder(const std::string& folder) {
    if (folder.empty()) {
        throw Norvane::vrl::vrlBaseException("No folder to extract the component to was given.");
    }
    fs::path path = fs::absolute(folder).lexically_normal();
    if (!path.has_filename()) {
        path = path.parent_path();
    }
    std::error_code missing;
    const fs::path resolved = fs::canonical(path, missing);
    return (missing ? path : resolved).string();
}

std::string sentence(const std::string& folder, const std::string& problem) {
    return "The component can't be extracted to " + folder + ": " + problem + ".";
}

[[noreturn]] void failLook(const std::string& folder, int error) { failPath("Can't look into", folder, error); }

bool isEmptyFolder(const std::string& folder) {
    FolderItems items(folder);
    const bool hasItem = items.next();
    if (items.error() != 0) {
        failLook(folder, items.error());
    }
    return !hasItem;
}

/// An item of an extracted component that its manifest doesn't list, as a path below the folder; "" when there is none.
/// `within` is the part of the folder to look into: "" or a path with a slash behind it.
std::string foreignItem(const Manifest& manifest, const std::string& folder, const std::string& within) {
    FolderItems items(folder + "/" + within);
    while (items.next()) {
        std::string path = within + items.name();
        if (!S_ISDIR(items.mode())) {
            if (path != manifestEntry && manifest.digests.count(path) == 0) {
                return path;
            }
            continue;
        }
        const auto next = manifest.digests.lower_bound(path + "/");
        if (next == manifest.digests.end() || next->first.compare(0, path.size() + 1, path + "/") != 0) {
            return path;
        }
        std::string below = foreignItem(manifest, folder, path + "/");
        if (!below.empty()) {
            return below;
        }
    }
    if (items.error() != 0) {
        failLook(folder, items.error());
    }
    return "";
}

/// Why a folder is not an earlier extraction of the component `name` that may be replaced; "" when it is one.
std::string whyNotOurs(const std::string& folder, const std::string& name) {
    Manifest manifest;
    try {
        manifest = parseManifest(readWhole(folder + "/" + manifestEntry));
    } catch (const Norvane::vrl::vrlBaseException&) {
        return "the folder is not empty, and its component.json is not that of an extracted component";
    }
    if (manifest.name != name) {
        return "the folder holds another component, '" + manifest.name + "'";
    }
    const std::string foreign = foreignItem(manifest, folder, "");
    return foreign.empty() ? "" : "the folder has '" + foreign + "', which is not the component's";
}

/// One extraction into a folder that the caller named, against others that do the same at the same time: a folder
/// with content is looked at and replaced under a lock on it, and one that appears under way makes it look again.
class FolderPlacement {
public:
    FolderPlacement(const ComponentArchive& archive, const std::string& folder, Deadline deadline)
        : archive_(archive), folder_(resolveFolder(folder)), deadline_(deadline) {
        // As it was given, for the links that it goes through.
        requireTrustedFolder(folder);
    }

    vrlExtractedComponent place() {
        constexpr int attempts = 100;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            requireTrustedFolder(folder_);
            if (std::optional<vrlExtractedComponent> component = tryOnce()) {
                return std::move(*component);
            }
        }
        throw Norvane::vrl::vrlBaseException(sentence(folder_, "other processes keep changing the folder"));
    }

private:
    using Placed = std::optional<vrlExtractedComponent>;

    /// The component in place; nothing to try again.
    Placed tryOnce() {
        std::error_code error;
        const fs::file_status status = fs::status(folder_, error);
        if (status.type() == fs::file_type::not_found) {
            return moveIn();
        }
        if (error) {
            failLook(folder_, error.value());
        }
        if (status.type() != fs::file_type::directory) {
            throw Norvane::vrl::vrlBaseException(sentence(folder_, "it is there and is not a folder"));
        }
        const OpenFile guard(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!guard.isOpen() && errno == ENOENT) {
            return Placed();
        }
        if (!guard.isOpen()) {
            failLook(folder_, errno);
        }
        guard.waitForLock(OpenFile::Lock::exclusive, folder_, deadline_);
        // A folder that another process replaced in the meantime is not the one that the lock was got on.
        if (!guard.isStill(folder_)) {
            return Placed();
        }
        return isEmptyFolder(folder_) ? moveIn() : reuseOrReplace();
    }

    Placed reuseOrReplace() {
        const std::shared_ptr<FolderLease> found = FolderLease::take(folder_, deadline_);
        Placed whole = wholeComponent(archive_, folder_, found);
        return whole ? std::move(whole) : replace(found);
    }

    /// Moves an earlier extraction out and the new one in. `found` is the lease on the one that is there, or null.
    Placed replace(const std::shared_ptr<FolderLease>& found) {
        std::string refusal =
            found ? whyNotOurs(folder_, archive_.manifest().name) : "the folder is not empty, and holds no component";
        if (refusal.empty() && !found->claim()) {
            refusal = "an instance runs from what the folder holds, which is not this component as it was packed";
        }
        if (!refusal.empty()) {
            throw Norvane::vrl::vrlBaseException(sentence(folder_, refusal));
        }
        prepare();
        removeTree(staging_->replaced());
        if (std::rename(folder_.c_str(), staging_->replaced().c_str()) != 0) {
            failPath("Can't replace the folder", folder_, errno);
        }
        return moveIn();
    }

    /// Moves the new extraction to where nothing or an empty folder is.
    Placed moveIn() {
        prepare();
        if (std::rename(staging_->fresh().c_str(), folder_.c_str()) == 0) {
            return describeComponent(archive_, folder_, std::move(lease_));
        }
        const int error = errno;
        if (error == ENOTEMPTY || error == EEXIST || error == ENOTDIR) {
            return Placed();
        }
        // Puts back what was moved out; without it, the rename finds nothing to move.
        std::rename(staging_->replaced().c_str(), folder_.c_str());
        failPath("Can't make the folder", folder_, error);
    }

    /// Extracts the archive, once, beside the folder.
    void prepare() {
        if (staging_) {
            return;
        }
        const std::string parent = fs::path(folder_).parent_path().string();
        makeFolders(parent);
        requireTrustedFolder(folder_);
        staging_.emplace(parent);
        extractAll(archive_, staging_->fresh());
        lease_ = FolderLease::take(staging_->fresh(), deadline_);
    }

    const ComponentArchive& archive_;
    const std::string folder_;
    const Deadline deadline_;
    std::optional<StagingFolder> staging_;
    std::shared_ptr<FolderLease> lease_;
};

/// Whether the folder holds exactly what the archive does: component.json byte for byte, and every file with its
/// digest. Files that the archive doesn't have are not looked at.
bool holdsWhole(const std::string& folder, const ComponentArchive& archive) {
    const std::string manifest = folder + "/" + manifestEntry;
    if (!isPlainFileOfSize(manifest, archive.manifestBytes().size()) ||
        readWhole(manifest) != archive.manifestBytes()) {
        return false;
    }
    for (const auto& file : archive.files()) {
        const std::string path = folder + "/" + file.first;
        if (!isPlainFileOfSize(path, file.second) || sha256OfFile(path) != archive.manifest().digests.at(file.first)) {
            return false;
        }
    }
    return true;
}

}  // namespace

void makeFolders(const std::string& folder, unsigned permissions) {
    std::error_code ignored;
    if (fs::is_directory(folder, ignored)) {
        return;
    }
    const std::string parent = fs::path(folder).parent_path().string();
    if (!parent.empty() && parent != folder) {
        makeFolders(parent, permissions);
    }
    if (mkdir(folder.c_str(), permissions) != 0 && errno != EEXIST) {
        failPath("Can't make the folder", folder, errno);
    }
}

void extractAll(const ComponentArchive& archive, const std::string& folder) {
    if (mkdir(folder.c_str(), 0755) != 0) {
        failPath("Can't make the folder", folder, errno);
    }
    FolderSink sink(folder);
    archive.readFiles(sink);
    sink.beginFile(manifestEntry);
    sink.data(archive.manifestBytes().data(), archive.manifestBytes().size());
    sink.endFile();
}

vrlExtractedComponent describeComponent(const ComponentArchive& archive, const std::string& folder,
                                        std::shared_ptr<FolderLease> lease) {
    vrlExtractedComponent component;
    component.folder = fs::absolute(folder).string();
    component.name = archive.manifest().name;
    component.version = archive.manifest().version;
    component.abi = archive.manifest().abi;
    component.functions = archive.manifest().functions;
    component.libraryFile = component.folder + "/" + archive.hostLibrary();
    component.libraryState = fileState(component.libraryFile);
    component.lease = std::move(lease);
    return component;
}

std::optional<vrlExtractedComponent> wholeComponent(const ComponentArchive& archive, const std::string& folder,
                                                    const std::shared_ptr<FolderLease>& lease) {
    if (!lease) {
        return std::nullopt;
    }
    // First the state of the library, then its content: a change from here on is noticed when it is loaded.
    vrlExtractedComponent component = describeComponent(archive, folder, lease);
    return isTrustedInside(folder) && holdsWhole(folder, archive) ? std::optional(std::move(component)) : std::nullopt;
}

vrlExtractedComponent placeInFolder(const ComponentArchive& archive, const std::string& folder,
                                    std::chrono::milliseconds patience) {
    return FolderPlacement(archive, folder, deadlineIn(patience)).place();
}

}  // namespace vrlkrt
