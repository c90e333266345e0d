#include "vrlkrt/archive/extractionlocks.h"

#include "vrlkrt/archive/folderitems.h"
#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/printable.h"

#include "vrlbase/exceptions.h"
#include "vrlbase/runtime.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

namespace vrlkrt {
namespace {

constexpr std::string_view stagingPrefix = ".loomkit-unpacking-";
constexpr std::size_t randomNameLength = 6;  // what mkdtemp fills in
constexpr char markerItem[] = "/loomkit-unpacking";
constexpr char freshItem[] = "/new";
constexpr char replacedItem[] = "/old";

/// Removes a staging folder as far as it can be; what stays is swept up by a later one. The marker goes after what it
/// vouches for, and the folder itself only when it is empty then.
void removeStaging(const StagingPaths& paths) noexcept {
    const bool isFreshGone = removeTree(paths.fresh);
    if (removeTree(paths.replaced) && isFreshGone) {
        unlink(paths.marker.c_str());
        rmdir(paths.folder.c_str());
    }
}

OpenFile openStaging(const std::string& path) {
    return OpenFile(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool hasStagingName(const std::string& name) {
    return name.size() == stagingPrefix.size() + randomNameLength &&
           name.compare(0, stagingPrefix.size(), stagingPrefix) == 0;
}

/// Whether a folder with the name of a staging folder holds what one may hold, in whatever state it was left: empty,
/// or marked and with nothing in it but the two items.
bool holdsStaging(const std::string& path) {
    bool isMarked = false;
    bool isEmpty = true;
    FolderItems items(path);
    while (items.next()) {
        const std::string name = std::string("/") + items.name();
        const bool isMarker = name == markerItem && S_ISREG(items.mode());
        if (!isMarker && name != freshItem && name != replacedItem) {
            return false;
        }
        isMarked = isMarked || isMarker;
        isEmpty = false;
    }
    return items.error() == 0 && (isEmpty || isMarked);
}

/// Removes the staging folders that processes of this user left: nobody holds their locks.
void sweepStaging(const std::string& parent) {
    FolderItems items(parent);
    while (items.next()) {
        if (!hasStagingName(items.name())) {
            continue;
        }
        const std::string path = parent + "/" + items.name();
        const OpenFile folder = openStaging(path);
        struct stat state {};
        if (folder.isOpen() && fstat(folder.get(), &state) == 0 && state.st_uid == geteuid() &&
            folder.tryLock(OpenFile::Lock::exclusive) && folder.isStill(path) && holdsStaging(path)) {
            removeStaging(StagingPaths(path));
        }
    }
}

}  // namespace

void failPath(const std::string& what, const std::string& path, int error) {
    throw Norvane::vrl::vrlBaseException(what + " " + printable(path) + ": " + std::strerror(error) + ".");
}

OpenFile::~OpenFile() {
    if (isOpen()) {
        close();
    }
}

bool OpenFile::close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

bool OpenFile::tryLock(Lock kind) const {
    const int operation = (kind == Lock::shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
    int result = 0;
    do {
        result = flock(descriptor_, operation);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

void OpenFile::waitForLock(Lock kind, const std::string& path, Deadline deadline) const {
    constexpr std::chrono::milliseconds longestPause(50);
    std::chrono::milliseconds pause(1);
    for (bool isFirst = true; !tryLock(kind); isFirst = false) {
        if (errno != EWOULDBLOCK) {
            failPath("Can't lock", path, errno);
        }
        const std::string subject = "the lock on " + printable(path) + ", which another process holds.";
        if (std::chrono::steady_clock::now() >= deadline) {
            throw Norvane::vrl::vrlBaseException("Gave up waiting for " + subject);
        }
        if (isFirst) {
            vrlWriteLog(("Waiting for " + subject + "\n").c_str());
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, longestPause);
    }
}

bool OpenFile::isStill(const std::string& path) const {
    struct stat mine {};
    struct stat there {};
    return fstat(descriptor_, &mine) == 0 && stat(path.c_str(), &there) == 0 && mine.st_dev == there.st_dev &&
           mine.st_ino == there.st_ino;
}

StagingFolder::StagingFolder(const std::string& parent) {
    sweepStaging(parent);
    // Between making the folder and locking it, a sweep of another process can take it for an abandoned one.
    while (!lock_.isOpen()) {
        std::string path = parent + "/" + std::string(stagingPrefix) + std::string(randomNameLength, 'X');
        if (mkdtemp(path.data()) == nullptr) {
            failPath("Can't make a folder in", parent, errno);
        }
        OpenFile folder = openStaging(path);
        if (folder.isOpen() && folder.tryLock(OpenFile::Lock::exclusive) && folder.isStill(path)) {
            paths_ = StagingPaths(path);
            lock_ = std::move(folder);
        }
    }
    OpenFile mark(open(paths_.marker.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!mark.isOpen()) {
        const int error = errno;
        rmdir(paths_.folder.c_str());
        failPath("Can't write in", paths_.folder, error);
    }
}

StagingFolder::~StagingFolder() { removeStaging(paths_); }

StagingPaths::StagingPaths(const std::string& path)
    : folder(path), fresh(path + freshItem), replaced(path + replacedItem), marker(path + markerItem) {}

std::shared_ptr<FolderLease> FolderLease::take(const std::string& folder, Deadline deadline) {
    const std::string path = folder + "/" + manifestEntry;
    OpenFile manifest(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!manifest.isOpen()) {
        return nullptr;
    }
    manifest.waitForLock(OpenFile::Lock::shared, path, deadline);
    return std::make_shared<FolderLease>(std::move(manifest));
}

}  // namespace vrlkrt
