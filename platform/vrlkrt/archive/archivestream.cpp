#include "vrlkrt/archive/archivestream.h"

#include <utility>

namespace vrlkrt {

ArchiveStream::Buffer::Buffer(const std::string& block) {
    // A buffer for input never writes to its characters.
    char* begin = const_cast<char*>(block.data());
    setg(begin, begin, begin + block.size());
}

ArchiveStream::ArchiveStream(std::shared_ptr<const std::string> block)
    : std::istream(nullptr), block_(std::move(block)), buffer_(*block_) {
    rdbuf(&buffer_);
}

std::shared_ptr<const std::string> ArchiveStream::unreadBlock() const {
    return good() && buffer_.isUnread() ? block_ : nullptr;
}

}  // namespace vrlkrt
