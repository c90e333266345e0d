#pragma once

#include "cborhead.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx {

/// Writes CBOR items one after the other, straight into a block that the caller owns; without a block it only counts.
/// Counting first and writing then with the same calls gives a block that is filled to the byte.
class CborWriter {
public:
    CborWriter() = default;
    CborWriter(unsigned char* block, std::size_t room) noexcept : at_(block), room_(room) {}

    void writeUnsigned(std::uint64_t value) noexcept;
    void writeArrayStart(std::uint64_t items) noexcept;
    void writeTag(std::uint64_t tag) noexcept;
    void writeNull() noexcept;
    void writeText(std::string_view text) noexcept;
    void writeBytes(const void* bytes, std::size_t count) noexcept;

    /// Begins a byte string of `count` bytes, which the caller fills; null where nothing is to be written.
    unsigned char* beginBytes(std::size_t count) noexcept;

    /// Counts bytes that would be the same as others before. Only for a writer that counts.
    void skip(std::size_t count) noexcept { size_ += count; }

    bool writes() const noexcept { return at_ != nullptr; }
    std::size_t size() const noexcept { return size_; }

private:
    void writeHead(CborKind kind, std::uint64_t value) noexcept;
    unsigned char* advance(std::size_t count) noexcept;

    unsigned char* at_ = nullptr;
    std::size_t room_ = 0;
    std::size_t size_ = 0;
};

}  // namespace qx
