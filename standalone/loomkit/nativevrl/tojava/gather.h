#pragma once

#include "proxies/numericcast.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

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

/// Elements of a block: as many rows by as many columns as a vector of 16 bytes holds.
template <typename S>
constexpr std::size_t kBlock = 16 / sizeof(S);

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

/// Vectors of 16 bytes, by the width of an element.
template <std::size_t width>
struct Lanes;
template <>
struct Lanes<1> {
    using Vector = std::int8_t __attribute__((vector_size(16)));
};
template <>
struct Lanes<2> {
    using Vector = std::int16_t __attribute__((vector_size(16)));
};
template <>
struct Lanes<4> {
    using Vector = std::int32_t __attribute__((vector_size(16)));
};
template <>
struct Lanes<8> {
    using Vector = std::int64_t __attribute__((vector_size(16)));
};

/// A block of elements by their bits, as one vector for each column or row of it.
template <typename S>
struct Block {
    using Vector = typename Lanes<sizeof(S)>::Vector;
    static constexpr std::size_t size = kBlock<S>;

    Vector vectors[size];

    /// Turns columns into rows. Each round interleaves the first half of the vectors with the second.
    void transpose() { transposeRounds(std::make_integer_sequence<int, size>{}); }

private:
    template <int... lane>
    void transposeRounds(std::integer_sequence<int, lane...>) {
        constexpr int half = size / 2;
        for (std::size_t round = 1; round < size; round *= 2) {
            Block old = *this;
            for (std::size_t i = 0; i < half; ++i) {
                const Vector first = old.vectors[i];
                const Vector second = old.vectors[i + half];
                vectors[2 * i] = __builtin_shufflevector(first, second, (lane / 2 + lane % 2 * 2 * half)...);
                vectors[2 * i + 1] = __builtin_shufflevector(first, second, (half + lane / 2 + lane % 2 * 2 * half)...);
            }
        }
    }
};

/// A whole block of adjacent rows.
template <typename T, typename S>
void gatherBlock(const S* from, const GatherShape& shape, T* to) {
    Block<S> block;
    for (std::size_t column = 0; column < kBlock<S>; ++column) {
        std::memcpy(&block.vectors[column], from + column * shape.columnStride, sizeof block.vectors[column]);
    }
    block.transpose();
    for (std::size_t row = 0; row < kBlock<S>; ++row) {
        if constexpr (std::is_same_v<T, S>) {
            std::memcpy(to + row * shape.pitch, &block.vectors[row], sizeof block.vectors[row]);
        } else {
            S elements[kBlock<S>];
            std::memcpy(elements, &block.vectors[row], sizeof elements);
            for (std::size_t column = 0; column < kBlock<S>; ++column) {
                to[row * shape.pitch + column] = asElement<T>(elements[column]);
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
