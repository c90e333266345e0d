#include "cborwriter.h"

#include <cbor/encoding.h>

#include <cstring>

namespace qx {

namespace {

/// Initial byte and eight bytes of argument.
constexpr std::size_t kLongestHead = 9;

}  // namespace

template <typename Value>
void CborWriter::writeHead(std::size_t (*encode)(Value, unsigned char*, std::size_t), Value value) noexcept {
    unsigned char head[kLongestHead];
    const std::size_t length = encode(value, head, sizeof head);
    if (unsigned char* target = advance(length)) {
        std::memcpy(target, head, length);
    }
}

unsigned char* CborWriter::advance(std::size_t count) noexcept {
    size_ += count;
    if (at_ == nullptr || size_ > room_) {
        return nullptr;
    }
    unsigned char* target = at_;
    at_ += count;
    return target;
}

void CborWriter::writeUnsigned(std::uint64_t value) noexcept { writeHead(cbor_encode_uint, value); }

void CborWriter::writeArrayStart(std::uint64_t items) noexcept {
    writeHead(cbor_encode_array_start, std::size_t{items});
}

void CborWriter::writeTag(std::uint64_t tag) noexcept { writeHead(cbor_encode_tag, tag); }

void CborWriter::writeNull() noexcept {
    unsigned char item = 0;
    cbor_encode_null(&item, 1);
    if (unsigned char* target = advance(1)) {
        *target = item;
    }
}

void CborWriter::writeText(std::string_view text) noexcept {
    writeHead(cbor_encode_string_start, text.size());
    if (unsigned char* target = advance(text.size())) {
        std::memcpy(target, text.data(), text.size());
    }
}

unsigned char* CborWriter::beginBytes(std::size_t count) noexcept {
    writeHead(cbor_encode_bytestring_start, count);
    return advance(count);
}

void CborWriter::writeBytes(const void* bytes, std::size_t count) noexcept {
    unsigned char* target = beginBytes(count);
    if (target != nullptr && count != 0) {
        std::memcpy(target, bytes, count);
    }
}

}  // namespace qx
