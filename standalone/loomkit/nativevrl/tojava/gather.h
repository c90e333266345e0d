#pragma once

#include "layout/squareblock.h"
#include "proxies/castrun.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

/// Strided native elements as rows in a buffer. All strides are in elements.
namespace nativevrl {

/// Which elements are gathered, and how the rows lie in the buffer. Loops take it by value: blocks are stored as bytes,
/// which might be those of a shape that is referred to.
struct GatherShape {
    std::size_t rows;
    std::size_t columns;
    std::size_t rowStride;     ///< in the source, from one row to the next
    std::size_t columnStride;  ///< in the source, from one element of a row to the next
    std::size_t pitch;         ///< in the buffer, from one row to the next

    /// One row of elements that lie `stride` apart.
    static constexpr GatherShape row(std::size_t length, std::size_t stride) { return {1, length, 0, stride, length}; }

    /// Rows whose elements are neighbours, column by column.
    static constexpr GatherShape neighbours(std::size_t rows, std::size_t length, std::size_t columnStride,
                                            std::size_t pitch) {
        return {rows, length, 1, columnStride, pitch};
    }
};

template <typename T>
constexpr std::size_t blockSide = SquareBlock<T>::size;

/// How many columns are read side by side: each row of the buffer then gets a run of stores.
template <typename T>
constexpr std::size_t panelColumns = std::max<std::size_t>(8, blockSide<T>);

/// `width` columns, element by element: known to the compiler for all but the last of them, so that its inner loop is
/// unrolled.
template <typename T, typename S, typename Width>
void gatherSingly(const S* from, GatherShape shape, T* to, Width width) {
    for (std::size_t row = 0; row < shape.rows; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            to[row * shape.pitch + column] = castElement<T>(from[row * shape.rowStride + column * shape.columnStride]);
        }
    }
}

/// A whole number of blocks of adjacent rows of a panel, turned in the source's type. Lines of a block are cast on
/// their way out, if at all.
template <typename T, typename S>
void turnPanel(const S* from, GatherShape shape, T* to) {
    static_assert(panelColumns<S> == panelColumns<T> && panelColumns<S> % blockSide<S> == 0);
    for (std::size_t row = 0; row < shape.rows; row += blockSide<S>) {
        for (std::size_t column = 0; column < panelColumns<S>; column += blockSide<S>) {
            SquareBlock<S> block;
            block.load(from + column * shape.columnStride, shape.columnStride);
            block.transpose();
            if constexpr (std::is_same_v<T, S>) {
                block.store(to + column, shape.pitch);
            } else {
                S lines[blockSide<S> * blockSide<S>];
                block.store(lines, blockSide<S>);
                for (std::size_t i = 0; i < blockSide<S>; ++i) {
                    castRun(lines + i * blockSide<S>, blockSide<S>, to + i * shape.pitch + column);
                }
            }
        }
        from += blockSide<S>;
        to += blockSide<S> * shape.pitch;
    }
}

/// The same by way of columns that are cast as they lie, some rows of them at a time, and turned in the target's type.
template <typename T, typename S>
void castAndTurnPanel(const S* from, GatherShape shape, T* to) {
    constexpr std::size_t piece = 64;
    static_assert(piece % blockSide<T> == 0);
    T cast[panelColumns<T> * piece];
    for (std::size_t row = 0; row < shape.rows; row += piece) {
        const std::size_t rows = std::min(piece, shape.rows - row);
        for (std::size_t column = 0; column < panelColumns<T>; ++column) {
            castRun(from + column * shape.columnStride + row, rows, cast + column * piece);
        }
        turnPanel<T>(cast, GatherShape::neighbours(rows, panelColumns<T>, piece, shape.pitch), to + row * shape.pitch);
    }
}

/// Integers that become wider are cast one by one: several of them fit into what is read at a time.
template <typename T, typename S>
constexpr bool turnsBlocks = sizeof(T) <= sizeof(S) || (std::is_floating_point_v<T> && std::is_floating_point_v<S>);

/// As many columns as a panel has.
template <typename T, typename S>
void gatherPanel(const S* from, GatherShape shape, T* to) {
    if constexpr (turnsBlocks<T, S>) {
        if (shape.rowStride == 1) {
            const std::size_t left = shape.rows % std::max(blockSide<T>, blockSide<S>);
            shape.rows -= left;
            if constexpr (std::is_same_v<T, S> || sizeof(T) > sizeof(S)) {
                turnPanel(from, shape, to);
            } else {
                castAndTurnPanel(from, shape, to);
            }
            from += shape.rows;
            to += shape.rows * shape.pitch;
            shape.rows = left;
        }
    }
    gatherSingly(from, shape, to, std::integral_constant<std::size_t, panelColumns<T>>{});
}

/// Copies the elements that `shape` tells of, each cast to T, into rows at `to`.
template <typename T, typename S>
void gather(const S* from, const GatherShape& shape, T* to) {
    if (shape.columnStride == 1) {
        for (std::size_t row = 0; row < shape.rows; ++row) {
            castRun(from + row * shape.rowStride, shape.columns, to + row * shape.pitch);
        }
        return;
    }
    std::size_t column = 0;
    for (; column + panelColumns<T> <= shape.columns; column += panelColumns<T>) {
        gatherPanel(from + column * shape.columnStride, shape, to + column);
    }
    gatherSingly(from + column * shape.columnStride, shape, to + column, shape.columns - column);
}

}  // namespace nativevrl
