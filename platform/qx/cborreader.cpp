#include "cborreader.h"

namespace qx {

namespace {

/// Whether a serialised form holds items of this kind at all. The simple values are null alone.
bool isUsed(const CborItem& item) noexcept {
    switch (item.kind) {
        case CborKind::unsignedNumber:
        case CborKind::bytes:
        case CborKind::text:
        case CborKind::array:
        case CborKind::tag:
            return true;
        case CborKind::simple:
            return item.value == kCborNull;
    }
    return false;
}

}  // namespace

/// The next `count` bytes, or null where fewer are left.
const unsigned char* CborReader::advance(std::size_t count) noexcept {
    if (count > remaining_) {
        return nullptr;
    }
    const unsigned char* bytes = at_;
    at_ += count;
    remaining_ -= count;
    return bytes;
}

bool CborReader::readHead(CborItem& item) noexcept {
    const unsigned char* first = advance(1);
    if (first == nullptr) {
        return false;
    }
    item.kind = static_cast<CborKind>(*first >> kCborKindShift);
    const unsigned lowBits = *first & kCborLowBits;
    if (lowBits < kCborFirstCode) {
        item.value = lowBits;
        return true;
    }
    if (lowBits > kCborLastCode) {
        return false;
    }
    const std::size_t count = valueBytesBehind(lowBits);
    const unsigned char* bytes = advance(count);
    if (bytes == nullptr) {
        return false;
    }
    for (std::size_t i = 0; i != count; ++i) {
        item.value = item.value << 8 | bytes[i];
    }
    return shortestLowBits(item.value) == lowBits;
}

bool CborReader::read(CborItem& item) noexcept {
    item = {};
    if (!readHead(item) || !isUsed(item)) {
        return false;
    }
    const bool isString = item.kind == CborKind::bytes || item.kind == CborKind::text;
    if (isString) {
        item.data = advance(static_cast<std::size_t>(item.value));
    }
    return !isString || item.data != nullptr;
}

bool CborReader::readUnsigned(std::uint64_t& value) noexcept {
    CborItem item;
    const bool isUnsigned = read(item) && item.kind == CborKind::unsignedNumber;
    value = item.value;
    return isUnsigned;
}

bool CborReader::readArrayStart(std::uint64_t& items) noexcept {
    CborItem item;
    const bool isArray = read(item) && item.kind == CborKind::array;
    items = item.value;
    return isArray && items <= remaining_;
}

bool CborReader::readTagged(std::uint64_t tag, std::string_view& bytes) noexcept {
    CborItem head;
    CborItem body;
    if (!read(head) || head.kind != CborKind::tag || head.value != tag || !read(body) || body.kind != CborKind::bytes) {
        return false;
    }
    bytes = {reinterpret_cast<const char*>(body.data), static_cast<std::size_t>(body.value)};
    return true;
}

}  // namespace qx
