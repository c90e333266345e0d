#pragma once

#include "layout/leveltable.h"
#include "layout/rowbuffer.h"
#include "toarray/transpose.h"

#include <cassert>
#include <cstddef>

namespace nativevrl::JConvert {

/// How many rows a tile holds, none for no tile, and how far apart they lie, in elements.
struct TileShape {
    std::size_t rows;
    std::size_t pitch;
};

/// Whether `count` neighbours at a level are worth gathering in a tile before they are stored, and in what tile.
/// Column-major storage takes the elements of one Java row far apart from one another, so that a long row touches
/// more cache lines than stay near until the next row fills them up.
TileShape tileFor(const LevelExtent* level, const LevelExtent* levelsEnd, std::size_t elementBytes, std::size_t count);

/// Some neighbours of a level whose stride is 1, each gathered in a row of its own in which the levels below lie as
/// they do in the array, and stored together column by column: neighbours are adjacent there.
template <typename Element>
class ScatterTile {
public:
    /// Makes room; none for a shape without rows, nor when there is no memory.
    explicit ScatterTile(TileShape shape) : mostRows_(shape.rows) {
        rows_.setPitch(shape.pitch);
        if (shape.rows != 0) {
            rows_.grow(shape.rows * shape.pitch);
        }
    }

    bool isThere() const noexcept { return rows_.capacity() != 0; }

    /// Takes the place of a level and those below it; `block` is where the level's first neighbour lies.
    void standFor(const LevelExtent* level, const LevelExtent* levelsEnd, Element* block) {
        assert(level->stride == 1);
        target_ = block;
        columnStride_ = level->span;
        rowLevels_.assign(level + 1, levelsEnd);
        for (LevelExtent& below : rowLevels_) {
            below.stride /= level->span;
            below.span /= level->span;
        }
        width_ = rowLevels_.back().span;
        assert(width_ <= rows_.pitch());
        isFar_ = std::size_t{levelsEnd[-1].span} * sizeof(Element) >= farBytes;
    }

    /// The levels of a row, whose block starts at nextRow().
    const LevelTable& rowLevels() const noexcept { return rowLevels_; }

    /// The row that the next neighbour goes to. Its content is what an earlier neighbour left.
    Element* nextRow() {
        if (filled_ == mostRows_) {
            flush();
        }
        return rows_.row(filled_++);
    }

    /// Stores the rows that were handed out since the last time.
    void flush() {
        Transposition<Element>{rows_.row(0), rows_.pitch(), filled_, width_, target_, columnStride_, isFar_}.run();
        target_ += filled_;
        filled_ = 0;
    }

private:
    std::size_t mostRows_;
    RowBuffer<Element> rows_;
    LevelTable rowLevels_;
    std::size_t width_ = 0;
    std::size_t columnStride_ = 0;
    bool isFar_ = false;
    Element* target_ = nullptr;
    std::size_t filled_ = 0;
};

}  // namespace nativevrl::JConvert
