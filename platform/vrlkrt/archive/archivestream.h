#pragma once

#include <istream>
#include <memory>
#include <streambuf>
#include <string>

namespace vrlkrt {

/// A stream over an immutable block of bytes that it shares, so that an archive in memory needs no further copy:
/// whoever recognises the stream takes the block itself. Goes forwards only.
class ArchiveStream : public std::istream {
public:
    /// `block` is not null.
    explicit ArchiveStream(std::shared_ptr<const std::string> block);

    /// The block, as long as nothing was read from the stream; null afterwards.
    std::shared_ptr<const std::string> unreadBlock() const;

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(const std::string& block);
        bool isUnread() const { return gptr() == eback(); }
    };

    std::shared_ptr<const std::string> block_;
    Buffer buffer_;
};

}  // namespace vrlkrt
