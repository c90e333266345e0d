#pragma once

#include "proxies/numericcast.h"

#include <cstddef>
#include <cstring>
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

/// How many columns are read side by side: each row of the buffer then gets a run of stores.
constexpr std::size_t kGatherWidth = 8;

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

/// kGatherWidth columns of adjacent rows, an even number of them, for elements of 8 bytes that keep their bits: two
/// rows by two columns at a time in vectors of two, which halves the loads and stores of the plain loop.
template <typename T>
void gatherPairs(const T* from, const GatherShape& shape, T* to) {
    using Pair = double __attribute__((vector_size(2 * sizeof(double))));
    static_assert(sizeof(T) == sizeof(double));
    for (std::size_t row = 0; row < shape.rows; row += 2) {
        for (std::size_t column = 0; column < kGatherWidth; column += 2) {
            Pair left;
            Pair right;
            std::memcpy(&left, from + column * shape.columnStride + row, sizeof left);
            std::memcpy(&right, from + (column + 1) * shape.columnStride + row, sizeof right);
            const Pair upper = __builtin_shufflevector(left, right, 0, 2);
            const Pair lower = __builtin_shufflevector(left, right, 1, 3);
            std::memcpy(to + row * shape.pitch + column, &upper, sizeof upper);
            std::memcpy(to + (row + 1) * shape.pitch + column, &lower, sizeof lower);
        }
    }
}

/// kGatherWidth columns.
template <typename T, typename S>
void gatherFullPanel(const S* from, GatherShape shape, T* to) {
    if constexpr (std::is_same_v<T, S> && sizeof(T) == sizeof(double)) {
        if (shape.rowStride == 1) {
            GatherShape even = shape;
            even.rows -= shape.rows % 2;
            gatherPairs(from, even, to);
            from += even.rows;
            to += even.rows * shape.pitch;
            shape.rows -= even.rows;
        }
    }
    gatherPanel(from, shape, to, std::integral_constant<std::size_t, kGatherWidth>{});
}

/// Copies the elements that `shape` tells of, each cast to T, into rows at `to`.
template <typename T, typename S>
void gather(const S* from, const GatherShape& shape, T* to) {
    if (shape.columnStride == 1) {
        gatherContiguous(from, shape, to);
        return;
    }
    std::size_t column = 0;
    for (; column + kGatherWidth <= shape.columns; column += kGatherWidth) {
        gatherFullPanel(from + column * shape.columnStride, shape, to + column);
    }
    gatherPanel(from + column * shape.columnStride, shape, to + column, shape.columns - column);
}

}  // namespace nativevrl
