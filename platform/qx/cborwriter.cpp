#include "cborwriter.h"

#include <cstring>

namespace qx {

void CborWriter::writeHead(CborKind kind, std::uint64_t value) noexcept {
    const unsigned lowBits = shortestLowBits(value);
    const std::size_t valueBytes = valueBytesBehind(lowBits);
    unsigned char* head = advance(1 + valueBytes);
    if (head == nullptr) {
        return;
    }
    head[0] = static_cast<unsigned char>(static_cast<unsigned>(kind) << kCborKindShift | lowBits);
    for (std::size_t i = valueBytes; i != 0; --i) {
        head[i] = static_cast<unsigned char>(value);
        value >>= 8;
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

void CborWriter::writeUnsigned(std::uint64_t value) noexcept { writeHead(CborKind::unsignedNumber, value); }

void CborWriter::writeArrayStart(std::uint64_t items) noexcept { writeHead(CborKind::array, items); }

void CborWriter::writeTag(std::uint64_t tag) noexcept { writeHead(CborKind::tag, tag); }

void CborWriter::writeNull() noexcept { writeHead(CborKind::simple, kCborNull); }

void CborWriter::writeText(std::string_view text) noexcept {
    writeHead(CborKind::text, text.size());
    if (unsigned char* target = advance(text.size())) {
        std::memcpy(target, text.data(), text.size());
    }
}

unsigned char* CborWriter::beginBytes(std::size_t count) noexcept {
    writeHead(CborKind::bytes, count);
    return advance(count);
}

void CborWriter::writeBytes(const void* bytes, std::size_t count) noexcept {
    unsigned char* target = beginBytes(count);
    if (target != nullptr && count != 0) {
        std::memcpy(target, bytes, count);
    }
}

}  // namespace qx
