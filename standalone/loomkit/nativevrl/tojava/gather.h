#pragma once

#include "proxies/numericcast.h"
#include "toarray/squareblock.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

/// Strided native elements as rows in a buffer. All strides are in elements.
namespace nativevrl {

/// Which elements are gathered, and how the rows lie in the buffer.
struct GatherShape {
    std::size_t rows;
    std::size_t columns;
    std::size_t rowStride;     ///< in the source, from one row to the next
    std::size_t columnStride;  ///< in the source, from one element of a row to the next
    std::size_t pitch;         ///< in the buffer, from one row to the next
};

/// The cast of an element, or the element itself where nothing is cast.
template <typename T, typename S>
constexpr T asElement(S value) {
    if constexpr (std::is_same_v<T, S>) {
        return value;
    } else {
        return castElement<T>(value);
    }
}

template <typename S>
constexpr std::size_t kBlock = SquareBlock<S>::size;

/// How many columns are read side by side: each row of the buffer then gets a run of stores.
template <typename S>
constexpr std::size_t kPanel = std::max<std::size_t>(8, kBlock<S>);

/// One row after the other, for rows whose elements are next to one another.
template <typename T, typename S>
void gatherContiguous(const S* from, const GatherShape& shape, T* to) {
    for (std::size_t row = 0; row < shape.rows; ++row) {
        const S* source = from + row * shape.rowStride;
        T* target = to + row * shape.pitch;
        for (std::size_t column = 0; column < shape.columns; ++column) {
            target[column] = asElement<T>(source[column]);
        }
    }
}

/// `width` columns: known to the compiler for all but the last of them, so that its inner loop is unrolled.
template <typename T, typename S, typename Width>
void gatherPanel(const S* from, const GatherShape& shape, T* to, Width width) {
    for (std::size_t row = 0; row < shape.rows; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            to[row * shape.pitch + column] = asElement<T>(from[row * shape.rowStride + column * shape.columnStride]);
        }
    }
}

/// A whole block of adjacent rows.
template <typename T, typename S>
void gatherBlock(const S* from, const GatherShape& shape, T* to) {
    SquareBlock<S> block;
    block.load(from, shape.columnStride);
    block.transpose();
    if constexpr (std::is_same_v<T, S>) {
        block.store(to, shape.pitch);
    } else {
        S elements[kBlock<S> * kBlock<S>];
        block.store(elements, kBlock<S>);
        for (std::size_t row = 0; row < kBlock<S>; ++row) {
            for (std::size_t column = 0; column < kBlock<S>; ++column) {
                to[row * shape.pitch + column] = asElement<T>(elements[row * kBlock<S> + column]);
            }
        }
    }
}

/// Casts to and from integers are faster element by element.
template <typename T, typename S>
constexpr bool gathersByBlocks = std::is_same_v<T, S> || (std::is_floating_point_v<T> && std::is_floating_point_v<S>);

/// kPanel columns, by blocks where the rows are adjacent.
template <typename T, typename S>
void gatherFullPanel(const S* from, GatherShape shape, T* to) {
    if (gathersByBlocks<T, S> && shape.rowStride == 1) {
        for (; shape.rows >= kBlock<S>; shape.rows -= kBlock<S>) {
            for (std::size_t column = 0; column < kPanel<S>; column += kBlock<S>) {
                gatherBlock(from + column * shape.columnStride, shape, to + column);
            }
            from += kBlock<S>;
            to += kBlock<S> * shape.pitch;
        }
    }
    gatherPanel(from, shape, to, std::integral_constant<std::size_t, kPanel<S>>{});
}

/// Copies the elements that `shape` tells of, each cast to T, into rows at `to`.
template <typename T, typename S>
void gather(const S* from, const GatherShape& shape, T* to) {
    if (shape.columnStride == 1) {
        gatherContiguous(from, shape, to);
        return;
    }
    std::size_t column = 0;
    for (; column + kPanel<S> <= shape.columns; column += kPanel<S>) {
        gatherFullPanel(from + column * shape.columnStride, shape, to + column);
    }
    gatherPanel(from + column * shape.columnStride, shape, to + column, shape.columns - column);
}

}  // namespace nativevrl
