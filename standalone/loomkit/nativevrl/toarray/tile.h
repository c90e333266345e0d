#pragma once

#include "layout/leveltable.h"
#include "toarray/transpose.h"

#include <cstddef>
#include <memory>
#include <new>

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
/// they do in the array, and stored together column by column: neighbours are adjacent there. Rows are padded, so
/// that their elements of one column don't all fall on the same few sets of the cache.
template <typename Element>
class Tile {
public:
    /// Makes room; none for a shape without rows, nor when there is no memory.
    explicit Tile(TileShape shape)
        : shape_(shape), rows_(shape.rows == 0 ? nullptr : new (std::nothrow) Element[shape.rows * shape.pitch]) {}

    bool isThere() const noexcept { return rows_ != nullptr; }

    /// Takes the place of a level and those below it; `block` is where the level's first neighbour lies.
    void standFor(const LevelExtent* level, const LevelExtent* levelsEnd, Element* block) {
        target_ = block;
        columnStride_ = level->span;
        rowLevels_.assign(level + 1, levelsEnd);
        for (LevelExtent& below : rowLevels_) {
            below.stride /= level->span;
            below.span /= level->span;
        }
        width_ = rowLevels_.back().span;
        isFar_ = std::size_t{levelsEnd[-1].span} * sizeof(Element) >= kFarBytes;
    }

    /// The levels of a row, whose block starts at nextRow().
    const LevelTable& rowLevels() const noexcept { return rowLevels_; }

    /// The row that the next neighbour goes to. Its content is what an earlier neighbour left.
    Element* nextRow() {
        if (filled_ == shape_.rows) {
            flush();
        }
        return rows_.get() + filled_++ * shape_.pitch;
    }

    /// Stores the rows that were handed out since the last time.
    void flush() {
        Transposition<Element>{rows_.get(), shape_.pitch, filled_, width_, target_, columnStride_, isFar_}.run();
        target_ += filled_;
        filled_ = 0;
    }

private:
    TileShape shape_;
    std::unique_ptr<Element[]> rows_;
    LevelTable rowLevels_;
    std::size_t width_ = 0;
    std::size_t columnStride_ = 0;
    bool isFar_ = false;
    Element* target_ = nullptr;
    std::size_t filled_ = 0;
};

}  // namespace nativevrl::JConvert
