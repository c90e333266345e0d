#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <string>

namespace vrlkrt {

/// What one folder holds, "." and ".." aside: `while (items.next()) use(items.name());`. Memory that runs out is a
/// std::bad_alloc, where the walks of std::filesystem end the process.
class FolderItems {
public:
    /// Follows links.
    explicit FolderItems(const std::string& folder);
    /// The folder `name` in an open one. Follows no link.
    FolderItems(int parent, const char* name);
    ~FolderItems();
    FolderItems(const FolderItems&) = delete;
    FolderItems& operator=(const FolderItems&) = delete;

    /// False at the end, and where the folder can't be read any further.
    bool next();
    /// What the system says about why the folder can't be read; 0 when it can.
    int error() const noexcept { return error_; }
    /// The open folder; -1 where there is none.
    int descriptor() const noexcept { return folder_ == nullptr ? -1 : dirfd(folder_); }

    const char* name() const noexcept { return item_->d_name; }
    /// Type and permissions of the item, of a link and not of its target; 0 for one that is gone.
    mode_t mode() const noexcept;

private:
    FolderItems(int parent, const char* name, int flags);

    DIR* folder_ = nullptr;
    const dirent* item_ = nullptr;
    int error_ = 0;
};

/// Removes a file or a folder with all that is in it, for clean-up that must not fail. False when something stays.
bool removeTree(const std::string& path) noexcept;

}  // namespace vrlkrt
