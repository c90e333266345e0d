#include "vrlkrt/archive/componentcache.h"

#include "vrlkrt/archive/extraction.h"

#include "vrlbase/exceptions.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace vrlkrt {
namespace {

namespace fs = std::filesystem;

/// The lock of one folder of the cache. Its file stays: removing it would let two processes hold locks on
/// two files of the same name.
OpenFile lockCacheFolder(const std::string& folder) {
    const std::string path = folder + ".lock";
    OpenFile file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.isOpen()) {
        failPath("Can't open the lock file", path, errno);
    }
    if (!file.lock(OpenFile::Lock::exclusive)) {
        failPath("Can't lock", path, errno);
    }
    return file;
}

/// Code is run from the cache, so nobody else may be able to put some there: the folder may not be writable by
/// all, and no folder on the way to it that stands in one for all, such as /tmp, may be somebody else's.
void requirePrivate(const std::string& cacheFolder) {
    fs::path path = fs::canonical(cacheFolder);
    struct stat state {};
    if (stat(path.c_str(), &state) != 0) {
        failPath("Can't look at the component cache", cacheFolder, errno);
    }
    if ((state.st_mode & S_IWOTH) != 0) {
        throw Norvane::vrl::vrlBaseException("The component cache " + cacheFolder + " can be written by everybody.");
    }
    for (; path.has_relative_path(); path = path.parent_path()) {
        const uid_t owner = state.st_uid;
        if (stat(path.parent_path().c_str(), &state) != 0) {
            failPath("Can't look at", path.parent_path().string(), errno);
        }
        if ((state.st_mode & S_IWOTH) != 0 && owner != geteuid() && owner != 0) {
            throw Norvane::vrl::vrlBaseException("The component cache " + cacheFolder +
                                                 " is not safe: " + path.string() + " belongs to another user.");
        }
    }
}

void moveFolder(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        failPath("Can't move a folder of the component cache to", to, errno);
    }
}

}  // namespace

vrlExtractedComponent placeInCache(const ComponentArchive& archive, const std::string& cacheFolder) {
    makeFolders(cacheFolder, 0700);
    requirePrivate(cacheFolder);
    const std::string key = archive.manifest().name + "-" + archive.digest();
    const std::string folder = cacheFolder + "/" + key;
    const OpenFile lock = lockCacheFolder(folder);
    if (holdsWhole(folder, archive)) {
        return describeComponent(archive, folder, FolderLease::take(folder));
    }
    const StagingFolder staging(cacheFolder, key);
    extractAll(archive, staging.item("new"));
    std::shared_ptr<FolderLease> lease = FolderLease::take(staging.item("new"));
    if (fs::exists(fs::symlink_status(folder))) {
        moveFolder(folder, staging.item("old"));
    }
    moveFolder(staging.item("new"), folder);
    return describeComponent(archive, folder, std::move(lease));
}

}  // namespace vrlkrt
