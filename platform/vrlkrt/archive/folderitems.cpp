#include "vrlkrt/archive/folderitems.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

namespace vrlkrt {
namespace {

/// Throws std::bad_alloc.
bool removeItem(int parent, const char* name) {
    if (unlinkat(parent, name, 0) == 0 || errno == ENOENT) {
        return true;
    }
    // The first is what Linux says of a folder, the second what others do.
    if (errno != EISDIR && errno != EPERM) {
        return false;
    }
    bool areGone = true;
    for (FolderItems items(parent, name); items.next();) {
        areGone = removeItem(items.descriptor(), items.name()) && areGone;
    }
    return areGone && (unlinkat(parent, name, AT_REMOVEDIR) == 0 || errno == ENOENT);
}

}  // namespace

FolderItems::FolderItems(const std::string& folder) : FolderItems(AT_FDCWD, folder.c_str(), 0) {}

FolderItems::FolderItems(int parent, const char* name) : FolderItems(parent, name, O_NOFOLLOW) {}

FolderItems::FolderItems(int parent, const char* name, int flags) {
    const int descriptor = openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
    folder_ = descriptor < 0 ? nullptr : fdopendir(descriptor);
    error_ = folder_ == nullptr ? errno : 0;
    if (folder_ == nullptr && descriptor >= 0) {
        close(descriptor);
    }
    if (error_ == ENOMEM) {
        throw std::bad_alloc();
    }
}

FolderItems::~FolderItems() {
    if (folder_ != nullptr) {
        closedir(folder_);
    }
}

bool FolderItems::next() {
    if (folder_ == nullptr) {
        return false;
    }
    do {
        errno = 0;
        item_ = readdir(folder_);
        error_ = errno;
    } while (item_ != nullptr && (std::strcmp(name(), ".") == 0 || std::strcmp(name(), "..") == 0));
    return item_ != nullptr;
}

mode_t FolderItems::mode() const noexcept {
    struct stat state {};
    return fstatat(descriptor(), name(), &state, AT_SYMLINK_NOFOLLOW) == 0 ? state.st_mode : 0;
}

bool removeTree(const std::string& path) noexcept {
    try {
        return removeItem(AT_FDCWD, path.c_str());
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace vrlkrt
