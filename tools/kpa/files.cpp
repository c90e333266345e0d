#include "files.h"

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/printable.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace kpa {
namespace {

/// An open file; closed with the object, unless close was called.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const noexcept { return number_; }
    /// False where what was written did not get to where it belongs, with errno set.
    bool close() noexcept { return ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

[[noreturn]] void failSystem(const std::string& what, const std::string& path) {
    throw FileFailure(what + " ", path, std::string(": ") + std::strerror(errno));
}

/// The size that a regular file has now.
std::uint64_t sizeOfFile(const Descriptor& file, const std::string& path) {
    struct stat state {};
    if (file.get() < 0 || fstat(file.get(), &state) != 0) {
        failSystem("can't read", path);
    }
    if (!S_ISREG(state.st_mode)) {
        throw FileFailure("can't read ", path, S_ISDIR(state.st_mode) ? ": it is a folder" : ": it is not a file");
    }
    return static_cast<std::uint64_t>(state.st_size);
}

/// Writes all; false with errno set.
bool writeAll(const Descriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

/// The permissions that a new file has here.
mode_t newFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

FileFailure::FileFailure(const std::string& before, const std::string& path, const std::string& after)
    : std::runtime_error(before + vrlkrt::printable(path) + after) {}

std::string readFile(const std::string& path, std::uint64_t limit) {
    // Without waiting for a writer, should it be a pipe.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const std::uint64_t size = sizeOfFile(file, path);
    std::string bytes;
    std::size_t count = 0;
    if (size <= limit) {
        // One more byte tells a file that grows meanwhile, or whose size the system does not know.
        bytes.resize(static_cast<std::size_t>(size) + 1);
        while (count < bytes.size()) {
            const ssize_t got = read(file.get(), bytes.data() + count, bytes.size() - count);
            if (got < 0 && errno != EINTR) {
                failSystem("can't read", path);
            }
            if (got == 0) {
                bytes.resize(count);
                return bytes;
            }
            count += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        }
    }
    throw FileFailure("can't read ", path,
                      size > limit
                          ? ": it has " + std::to_string(size) + " bytes, and " + std::to_string(limit) + " are allowed"
                          : ": it changes while it is read");
}

std::string readArchiveFile(const std::string& path) { return readFile(path, vrlkrt::ArchiveLimits().archiveBytes); }

void writeFile(const std::string& path, const std::string& bytes) {
    std::string temporary = path + ".XXXXXX";
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.get() < 0) {
        failSystem("can't write", path);
    }
    const bool written = writeAll(file, bytes) && fchmod(file.get(), newFileMode()) == 0;
    const int failure = errno;
    const bool closed = file.close();
    if (!written || !closed || std::rename(temporary.c_str(), path.c_str()) != 0) {
        errno = written ? errno : failure;
        const FileFailure problem("can't write ", path, std::string(": ") + std::strerror(errno));
        unlink(temporary.c_str());
        throw problem;
    }
}

}  // namespace kpa
