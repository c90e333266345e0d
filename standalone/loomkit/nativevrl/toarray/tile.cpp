#include "toarray/tile.h"

#include <algorithm>

namespace nativevrl::JConvert {

namespace {

constexpr std::size_t kCacheLine = 64;
/// Rows of fewer elements than this leave their cache lines in reach of the next rows.
constexpr std::size_t kShortRow = 64;
constexpr std::size_t kTileBytes = std::size_t{512} << 10U;
constexpr std::size_t kMostRows = 64;

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
    const std::size_t rows = std::min(kTileBytes / (pitch * elementBytes), kMostRows) / lineElements * lineElements;
    if (rows != 0) {
        return {std::min(rows, count), pitch};
    }
    // Very long rows fill whole lines of the array as well, as long as the tile stays small beside it.
    return {count / lineElements < 8 ? 0 : lineElements, pitch};
}

}  // namespace nativevrl::JConvert
