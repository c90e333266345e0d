#include "vrlkrt/archive/zipcontent.h"

#include "vrlkrt/archive/archivefailure.h"

#include <zlib.h>

#include <array>
#include <new>

namespace vrlkrt {
namespace {

constexpr std::size_t blockBytes = 65536;

/// Hands content on while it fits the size that its entry states, and compares the whole at the end.
class CheckedContent {
public:
    CheckedContent(const ZipEntry& entry, const ContentConsumer& consume) : entry_(entry), consume_(consume) {}

    void add(const char* bytes, std::size_t count) {
        if (count > entry_.size - total_) {
            failEntry(entry_.path, "it has more than the " + std::to_string(entry_.size) + " bytes that it states");
        }
        total_ += count;
        crc_ = crc32_z(crc_, reinterpret_cast<const Bytef*>(bytes), count);
        consume_(bytes, count);
    }

    void end() const {
        if (total_ != entry_.size) {
            failEntry(entry_.path, "it has " + std::to_string(total_) + " bytes, not the " +
                                       std::to_string(entry_.size) + " that it states");
        }
        if (crc_ != entry_.crc) {
            failEntry(entry_.path, "its content is damaged: it does not match its checksum");
        }
    }

private:
    const ZipEntry& entry_;
    const ContentConsumer& consume_;
    std::uint64_t total_ = 0;
    uLong crc_ = 0;
};

/// Inflates the bytes of an entry, which have no header of their own.
class Inflation {
public:
    explicit Inflation(const ZipEntry& entry) : path_(entry.path) {
        constexpr int withoutHeader = -MAX_WBITS;
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(entry.packed.data()));
        stream_.avail_in = static_cast<uInt>(entry.packed.size());
        if (inflateInit2(&stream_, withoutHeader) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Inflation() { inflateEnd(&stream_); }
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;

    /// Bytes put into `block`; 0 only at the end, which is where the entry's bytes end.
    std::size_t read(std::array<char, blockBytes>& block) {
        if (ended_) {
            return 0;
        }
        stream_.next_out = reinterpret_cast<Bytef*>(block.data());
        stream_.avail_out = static_cast<uInt>(block.size());
        const int result = inflate(&stream_, Z_NO_FLUSH);
        if (result == Z_MEM_ERROR) {
            throw std::bad_alloc();
        }
        ended_ = result == Z_STREAM_END;
        const std::size_t count = block.size() - stream_.avail_out;
        if (!ended_ && (result != Z_OK || count == 0)) {
            failEntry(path_, std::string("its content is damaged: ") +
                                 (stream_.msg != nullptr ? stream_.msg : "the packed bytes end early"));
        }
        if (ended_ && stream_.avail_in != 0) {
            failEntry(path_, "its content is damaged: bytes follow its end");
        }
        return count;
    }

private:
    const std::string& path_;
    z_stream stream_{};
    bool ended_ = false;
};

}  // namespace

void readZipContent(const ZipEntry& entry, const ContentConsumer& consume) {
    CheckedContent content(entry, consume);
    if (entry.deflated) {
        Inflation inflation(entry);
        std::array<char, blockBytes> block;
        while (const std::size_t count = inflation.read(block)) {
            content.add(block.data(), count);
        }
    } else {
        content.add(entry.packed.data(), entry.packed.size());
    }
    content.end();
}

}  // namespace vrlkrt
