#pragma once

#include <cstddef>
#include <cstdint>

namespace qx {

/// The kinds of items in a serialised form, by their major type: the upper three bits of an item's first byte.
enum class CborKind : unsigned char { unsignedNumber = 0, bytes = 2, text = 3, array = 4, tag = 6, simple = 7 };

constexpr int kCborKindShift = 5;
/// The lower five bits hold a value up to 23, or one of four codes, 24 to 27, for 1, 2, 4 or 8 bytes of value behind
/// them, the most significant first. The codes after those are reserved, or begin an item of indefinite length.
constexpr unsigned kCborLowBits = 0x1F;
constexpr unsigned kCborFirstCode = 24;
constexpr unsigned kCborLastCode = 27;

/// The simple value that stands for nothing.
constexpr std::uint64_t kCborNull = 22;

/// The lower bits of the shortest head that holds `value`: the only one in a deterministic form.
constexpr unsigned shortestLowBits(std::uint64_t value) noexcept {
    return value < kCborFirstCode ? static_cast<unsigned>(value)
           : value <= 0xFF        ? 24
           : value <= 0xFFFF      ? 25
           : value <= 0xFFFFFFFF  ? 26
                                  : kCborLastCode;
}

/// How many bytes of value come behind these lower bits, the last code at most.
constexpr std::size_t valueBytesBehind(unsigned lowBits) noexcept {
    return lowBits < kCborFirstCode ? 0 : std::size_t{1} << (lowBits - kCborFirstCode);
}

}  // namespace qx
