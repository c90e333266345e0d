#include "vrlkrt/archive/componentcache.h"

#include "vrlkrt/archive/extraction.h"
#include "vrlkrt/archive/trustedfolder.h"

#include "vrlbase/exceptions.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

namespace vrlkrt {
namespace {

namespace fs = std::filesystem;

void makeCache(const std::string& folder) {
    requireTrustedFolder(folder);
    makeFolders(folder, 0700);
    requireTrustedFolder(folder);
}

void moveFolder(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        failPath("Can't move a folder of the component cache to", to, errno);
    }
}

vrlExtractedComponent fill(const ComponentArchive& archive, const std::string& cacheFolder, const std::string& folder,
                           Deadline deadline) {
    const StagingFolder staging(cacheFolder);
    extractAll(archive, staging.fresh());
    std::shared_ptr<FolderLease> lease = FolderLease::take(staging.fresh(), deadline);
    if (fs::exists(fs::symlink_status(folder))) {
        moveFolder(folder, staging.replaced());
    }
    moveFolder(staging.fresh(), folder);
    return describeComponent(archive, folder, std::move(lease));
}

}  // namespace

std::string chooseCache(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        requireTrustedFolder(folder);
        try {
            makeFolders(folder, 0700);
            return folder;
        } catch (const Norvane::vrl::vrlBaseException&) {
            continue;
        }
    }
    return folders.back();
}

vrlExtractedComponent placeInCache(const ComponentArchive& archive, const std::string& cacheFolder,
                                   std::chrono::milliseconds patience) {
    makeCache(cacheFolder);
    const Deadline deadline = deadlineIn(patience);
    const std::string folder = cacheFolder + "/" + archive.manifest().name + "-" + archive.digest();
    // The file stays: removing it would let two processes hold locks on two files of the same name.
    const std::string lockPath = folder + ".lock";
    const OpenFile lock(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    const int error = errno;
    if (lock.isOpen()) {
        lock.waitForLock(OpenFile::Lock::exclusive, lockPath, deadline);
    }
    std::optional<vrlExtractedComponent> whole = wholeComponent(archive, folder, FolderLease::take(folder, deadline));
    if (whole) {
        return std::move(*whole);
    }
    if (!lock.isOpen()) {
        failPath("Can't open the lock file", lockPath, error);
    }
    return fill(archive, cacheFolder, folder, deadline);
}

}  // namespace vrlkrt
