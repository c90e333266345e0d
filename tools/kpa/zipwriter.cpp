#include "zipwriter.h"

#include "vrlkrt/archive/ziprecords.h"

#include <zlib.h>

#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace kpa {
namespace {

namespace zip = vrlkrt::zip;

/// Appends `value` as a little-endian number of the width of `Number`; one that does not fit can't be written.
template <typename Number>
void put(std::string& out, std::size_t value) {
    if (value > std::numeric_limits<Number>::max()) {
        throw std::length_error("the archive can't be written: its files are too many or too large");
    }
    for (std::size_t byte = 0; byte < sizeof(Number); ++byte) {
        out += static_cast<char>(value >> (8 * byte) & 0xFFU);
    }
}

/// The content deflated without a header, or "" where that does not make it smaller.
std::string deflatedOrNothing(std::string_view content) {
    constexpr int withoutHeader = -MAX_WBITS;
    constexpr int memoryLevel = 8;
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, withoutHeader, memoryLevel, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw std::bad_alloc();
    }
    std::string packed(content.empty() ? 0 : content.size() - 1, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(result == Z_STREAM_END ? stream.total_out : 0);
    deflateEnd(&stream);
    return packed;
}

/// What the local header and the record of the directory have in common.
std::string commonFields(std::string_view path, std::string_view content, std::string_view packed, bool deflated) {
    constexpr std::size_t midnightOfFirstJanuary1980 = 0x00210000;
    std::string fields;
    put<std::uint16_t>(fields, zip::version);
    put<std::uint16_t>(fields, 0);  // flags
    put<std::uint16_t>(fields, deflated ? zip::deflated : zip::stored);
    put<std::uint32_t>(fields, midnightOfFirstJanuary1980);
    put<std::uint32_t>(fields, crc32_z(0, reinterpret_cast<const Bytef*>(content.data()), content.size()));
    put<std::uint32_t>(fields, packed.size());
    put<std::uint32_t>(fields, content.size());
    put<std::uint16_t>(fields, path.size());
    put<std::uint16_t>(fields, 0);  // extra fields
    return fields;
}

}  // namespace

void ZipWriter::add(std::string_view path, std::string_view content) {
    constexpr std::size_t plainFileMode = 0100644;
    if (entries_ == std::numeric_limits<std::uint16_t>::max() ||
        content.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("the archive can't be written: its files are too many or too large");
    }
    const std::string deflated = deflatedOrNothing(content);
    const std::string_view packed = deflated.empty() ? content : deflated;
    const std::string fields = commonFields(path, content, packed, !deflated.empty());

    directory_ += zip::directorySignature;
    put<std::uint16_t>(directory_, zip::madeByUnix | zip::version);
    directory_ += fields;
    put<std::uint16_t>(directory_, 0);  // comment
    put<std::uint16_t>(directory_, 0);  // volume
    put<std::uint16_t>(directory_, 0);  // internal attributes
    put<std::uint32_t>(directory_, plainFileMode << 16);
    put<std::uint32_t>(directory_, bytes_.size());
    directory_ += path;

    bytes_ += zip::localSignature;
    bytes_ += fields;
    bytes_ += path;
    bytes_ += packed;
    ++entries_;
}

std::string ZipWriter::finish() {
    const std::size_t offset = bytes_.size();
    bytes_ += directory_;
    bytes_ += zip::endSignature;
    put<std::uint32_t>(bytes_, 0);  // volumes
    put<std::uint16_t>(bytes_, entries_);
    put<std::uint16_t>(bytes_, entries_);
    put<std::uint32_t>(bytes_, directory_.size());
    put<std::uint32_t>(bytes_, offset);
    put<std::uint16_t>(bytes_, 0);  // comment
    return std::move(bytes_);
}

}  // namespace kpa
