#pragma once

/// Locks among processes that extract components. All are advisory locks of the kernel on open files, so that they
/// end with the process that held them, however it ends.

#include <memory>
#include <string>
#include <utility>

namespace vrlkrt {

/// Reports what went wrong with a path, with the system's words for `error`: "Can't make the folder /x: …".
[[noreturn]] void failPath(const std::string& what, const std::string& path, int error);

/// Owns an open file of the process; -1 is none.
class OpenFile {
public:
    explicit OpenFile(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    OpenFile(OpenFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    OpenFile& operator=(OpenFile&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~OpenFile();

    int get() const noexcept { return descriptor_; }
    bool isOpen() const noexcept { return descriptor_ >= 0; }

    enum class Lock { shared, exclusive, exclusiveIfFree };
    /// Waits for the lock, except with exclusiveIfFree. False when it can't be had, with errno set.
    bool lock(Lock kind) const;
    /// Whether `path` still is this file.
    bool isStill(const std::string& path) const;

private:
    int descriptor_;
};

/// A fresh folder of this process beside its later place, for files on their way. While the object lives, the folder
/// is locked, so that what a killed process left behind can be told from the folder of a living one: making an object
/// removes the former. What the folder holds goes with the object.
class StagingFolder {
public:
    /// Makes the folder in `parent`, which exists; its name starts with a dot and `label`.
    StagingFolder(const std::string& parent, const std::string& label);
    ~StagingFolder();
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    /// Path of an item in the folder, whether it is there or not.
    std::string item(const char* name) const { return path_ + "/" + name; }

private:
    std::string path_;
    OpenFile lock_;
};

/// Tells other processes that a component runs from a folder: a shared lock on its component.json.
class FolderLease {
public:
    /// Null when the folder has no component.json.
    static std::shared_ptr<FolderLease> take(const std::string& folder);

    /// Whether nobody but this lease is on the folder; it then keeps others from taking one.
    bool claim() const { return manifest_.lock(OpenFile::Lock::exclusiveIfFree); }

    explicit FolderLease(OpenFile manifest) : manifest_(std::move(manifest)) {}

private:
    OpenFile manifest_;
};

}  // namespace vrlkrt
