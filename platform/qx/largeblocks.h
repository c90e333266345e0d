#pragma once

#include <cstddef>

namespace qx {

/// From this size on a block is a mapping of its own.
constexpr std::size_t kLargeBlock = std::size_t{4} << 20U;

/// Room in front of a large block for the bookkeeping of its owner.
constexpr std::size_t kLargeBlockFront = 4096;

struct LargeBlock {
    void* payload = nullptr;   ///< on a boundary of 2 MB; kLargeBlockFront writable bytes lie in front of it
    std::size_t capacity = 0;  ///< bytes behind `payload`
    bool fresh = false;        ///< nothing but untouched zero pages
};

/// A block of at least `bytes`: one that was given back lately where one fits, otherwise fresh huge pages. The
/// payload is null when there is no memory.
LargeBlock takeLargeBlock(std::size_t bytes) noexcept;

/// Takes a block back. Some are kept, up to a bound, since mapping pages in costs several times what writing them does.
void giveBackLargeBlock(void* payload, std::size_t capacity) noexcept;

/// Physical memory and swap: what a block can't exceed.
std::size_t memoryBound() noexcept;

}  // namespace qx
