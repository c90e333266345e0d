#include "toarray/tile.h"

#include <algorithm>

namespace nativevrl::JConvert {

namespace {

/// Rows of fewer elements than this leave their cache lines in reach of the next rows.
constexpr std::size_t kShortRow = 64;
constexpr std::size_t kTileBytes = std::size_t{1} << 20U;
/// What a tile of very long rows may take: one line of the array still has its rows in it.
constexpr std::size_t kMostBytes = std::size_t{4} << 20U;
constexpr std::size_t kMostRows = 32;

/// Neighbours of the first level are adjacent, and every level below spans whole multiples of the one above it.
bool isColumnMajor(const LevelExtent* level, const LevelExtent* levelsEnd) {
    if (level->stride != 1) {
        return false;
    }
    for (; level + 1 != levelsEnd; ++level) {
        if (level[1].stride != level->span) {
            return false;
        }
    }
    return true;
}

}  // namespace

TileShape tileFor(const LevelExtent* level, const LevelExtent* levelsEnd, std::size_t elementBytes, std::size_t count) {
    if (levelsEnd - level < 2 || level->span == 0 || !isColumnMajor(level, levelsEnd)) {
        return {0, 0};
    }
    const std::size_t width = levelsEnd[-1].span / level->span;
    const std::size_t lineElements = kCacheLine / elementBytes;
    if (width < kShortRow || count < lineElements) {
        return {0, 0};
    }
    // An odd number of cache lines spreads the rows over all sets.
    const std::size_t lines = (width + lineElements - 1) / lineElements;
    const std::size_t pitch = (lines | 1U) * lineElements;
    const std::size_t rowBytes = pitch * elementBytes;
    const std::size_t rows = std::min(kTileBytes / rowBytes, kMostRows) / lineElements * lineElements;
    if (rows != 0) {
        return {std::min(rows, count), pitch};
    }
    return lineElements * rowBytes <= kMostBytes ? TileShape{lineElements, pitch} : TileShape{0, 0};
}

}  // namespace nativevrl::JConvert
