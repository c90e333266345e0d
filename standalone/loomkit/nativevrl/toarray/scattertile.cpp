#include "toarray/scattertile.h"

#include <algorithm>

namespace nativevrl::JConvert {

namespace {

/// Rows of fewer elements than this leave their cache lines in reach of the next rows.
constexpr std::size_t shortRow = 64;
constexpr std::size_t usualBytes = std::size_t{1} << 20U;
/// What a tile of very long rows may take: one line of the array still has its rows in it.
constexpr std::size_t mostBytes = std::size_t{4} << 20U;
constexpr std::size_t mostRows = 32;

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
    constexpr TileShape none{0, 0};
    if (levelsEnd - level < 2 || level->span == 0 || !isColumnMajor(level, levelsEnd)) {
        return none;
    }
    const std::size_t width = levelsEnd[-1].span / level->span;
    const std::size_t line = cacheLine / elementBytes;
    if (width < shortRow || count < line) {
        return none;
    }
    const std::size_t pitch = paddedPitch(width, line);
    const std::size_t rowBytes = pitch * elementBytes;
    const std::size_t rows = std::min(usualBytes / rowBytes, mostRows) / line * line;
    if (rows != 0) {
        return {std::min(rows, count), pitch};
    }
    return line * rowBytes <= mostBytes ? TileShape{line, pitch} : none;
}

}  // namespace nativevrl::JConvert
