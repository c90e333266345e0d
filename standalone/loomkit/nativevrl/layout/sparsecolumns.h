#pragma once

#include "qx/qx.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace nativevrl {

/// Row and column of an element, both from 0.
struct SparsePosition {
    std::uint32_t row;
    std::uint32_t column;
};

/// Where an element of a sparse array is stored, or would be: an empty range when it is not.
struct StoredRange {
    std::uint32_t first;
    std::uint32_t last;
    bool isStored() const noexcept { return first != last; }
};

/// The compressed columns of a sparse array, borrowed and read-only. Column starts never fall, and within a column the
/// row indices rise strictly; both tables may be null where nothing is stored.
struct SparseColumns {
    std::uint32_t rows = 0;
    std::uint32_t columns = 0;
    const std::uint32_t* rowIndex = nullptr;
    const std::uint32_t* columnStart = nullptr;  ///< the end of column c is columnStart[c + 1]

    static SparseColumns of(const qxArray* array) {
        return {array->get_dimensions()[0], static_cast<std::uint32_t>(qxGetN(array)), array->rowIndexTable(),
                array->columnStartTable()};
    }

    /// Number of stored elements.
    std::uint32_t count() const noexcept { return columnStart == nullptr ? 0 : columnStart[columns]; }

    /// Splits an index in column-major order, which must lie below the number of elements.
    SparsePosition positionOf(std::size_t index) const noexcept {
        return {static_cast<std::uint32_t>(index % rows), static_cast<std::uint32_t>(index / rows % columns)};
    }

    StoredRange findRange(SparsePosition at) const noexcept {
        const auto [first, last] =
            std::equal_range(rowIndex + columnStart[at.column], rowIndex + columnStart[at.column + 1], at.row);
        return {static_cast<std::uint32_t>(first - rowIndex), static_cast<std::uint32_t>(last - rowIndex)};
    }

    /// Calls `visit(row, column, position)` for the stored elements, column by column. An element out of its place in
    /// the order of a column ends the column: what stands behind it counts as absent.
    template <typename Visit>
    void forEachInOrder(Visit&& visit) const {
        for (std::uint32_t column = 0; column < columns; ++column) {
            const std::uint32_t end = columnStart[column + 1];
            std::uint32_t lowest = 0;
            for (std::uint32_t at = columnStart[column]; at < end && isWithin(rowIndex[at], lowest); ++at) {
                lowest = rowIndex[at] + 1;
                visit(rowIndex[at], column, at);
            }
        }
    }

    /// Whether an element in this row may follow those in rows below `lowest`.
    bool isWithin(std::uint32_t row, std::uint32_t lowest) const noexcept { return row >= lowest && row < rows; }
};

}  // namespace nativevrl
