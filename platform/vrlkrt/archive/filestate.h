#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace vrlkrt {

/// What tells a file from another one, and from itself after a change: device, number there, size in bytes, time of
/// the last change.
struct FileState {
    dev_t device;
    ino_t number;
    off_t size;
    timespec changed;

    bool isSameFile(const FileState& other) const { return device == other.device && number == other.number; }
    friend bool operator==(const FileState& a, const FileState& b) {
        return a.isSameFile(b) && a.size == b.size && a.changed.tv_sec == b.changed.tv_sec &&
               a.changed.tv_nsec == b.changed.tv_nsec;
    }
};

/// Nothing where there is no plain file; links are not followed.
inline std::optional<FileState> fileState(const std::string& path) {
    struct stat state {};
    if (lstat(path.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) {
        return std::nullopt;
    }
    return FileState{state.st_dev, state.st_ino, state.st_size, state.st_ctim};
}

}  // namespace vrlkrt
