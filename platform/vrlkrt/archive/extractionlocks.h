#pragma once

/// Locks among processes that extract components. All are advisory locks of the kernel on open files, so that they
/// end with the process that held them, however it ends. No wait for one is without an end.

#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace vrlkrt {

/// Reports what went wrong with a path, with the system's words for `error`: "Can't make the folder /x: …".
[[noreturn]] void failPath(const std::string& what, const std::string& path, int error);

/// How long others may hold what is needed here: long enough for them to unpack the largest archive.
constexpr std::chrono::milliseconds lockPatience = std::chrono::minutes(2);

/// The moment at which waiting ends.
using Deadline = std::chrono::steady_clock::time_point;
inline Deadline deadlineIn(std::chrono::milliseconds patience) { return std::chrono::steady_clock::now() + patience; }

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

    enum class Lock { shared, exclusive };
    /// False when the lock can't be had at once, with errno set.
    bool tryLock(Lock kind) const;
    /// Waits for the lock. Throws vrlBaseException that names the file as `path` when another process holds it still
    /// at the deadline, or it can't be had at all.
    void waitForLock(Lock kind, const std::string& path, Deadline deadline) const;
    /// Whether `path` still is this file.
    bool isStill(const std::string& path) const;
    /// Closes the file, which must be open. False, with errno set, when what was written may be lost: some file
    /// systems find out only now.
    bool close();

private:
    int descriptor_;
};

/// The paths of a staging folder and of what it may hold, made ahead: clean-up and moves take no memory for them.
struct StagingPaths {
    StagingPaths() = default;
    explicit StagingPaths(const std::string& path);

    std::string folder;
    std::string fresh;
    std::string replaced;
    std::string marker;
};

/// A fresh folder of this process beside its later place, for files on their way. While the object lives, the folder
/// is locked, so that what a killed process left behind can be told from the folder of a living one: making an object
/// removes the former. Removed is only a folder that this class made: by its name, by its owner, by the marker in it,
/// and by there being nothing else. What the folder holds goes with the object.
class StagingFolder {
public:
    /// Makes the folder in `parent`, which exists.
    explicit StagingFolder(const std::string& parent);
    ~StagingFolder();
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    /// Paths in the folder, whether something is there or not: for what is being made, and for what it replaces.
    const std::string& fresh() const noexcept { return paths_.fresh; }
    const std::string& replaced() const noexcept { return paths_.replaced; }

private:
    StagingPaths paths_;
    OpenFile lock_;
};

/// Tells other processes that a component runs from a folder: a shared lock on its component.json.
class FolderLease {
public:
    /// Null when the folder has no component.json. Waits for whoever replaces the folder.
    static std::shared_ptr<FolderLease> take(const std::string& folder, Deadline deadline);

    /// Whether nobody but this lease is on the folder; it then keeps others from taking one.
    bool claim() const { return manifest_.tryLock(OpenFile::Lock::exclusive); }

    explicit FolderLease(OpenFile manifest) : manifest_(std::move(manifest)) {}

private:
    OpenFile manifest_;
};

}  // namespace vrlkrt
