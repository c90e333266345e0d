#pragma once

#include "cborhead.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx {

/// One item head, or a whole string: `value` is the number, the item count, the tag or the byte count.
struct CborItem {
    CborKind kind = CborKind::simple;
    std::uint64_t value = 0;
    const unsigned char* data = nullptr;  ///< of a string: into the input

    bool isNull() const noexcept { return kind == CborKind::simple; }
};

/// Reads CBOR items one after the other out of bytes that the caller owns. Only what CborWriter writes is let through:
/// definite lengths, every number in its shortest form. A read that returns false leaves the reader of no further use.
class CborReader {
public:
    CborReader(const unsigned char* bytes, std::size_t count) noexcept : at_(bytes), remaining_(count) {}

    std::size_t remaining() const noexcept { return remaining_; }

    bool read(CborItem& item) noexcept;
    bool readUnsigned(std::uint64_t& value) noexcept;
    /// False also when the input is too short for that many items, of one byte at least each.
    bool readArrayStart(std::uint64_t& items) noexcept;
    /// A byte string under a tag.
    bool readTagged(std::uint64_t tag, std::string_view& bytes) noexcept;

private:
    bool readHead(CborItem& item) noexcept;
    const unsigned char* advance(std::size_t count) noexcept;

    const unsigned char* at_;
    std::size_t remaining_;
};

}  // namespace qx
