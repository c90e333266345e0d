#pragma once

#include "qx/qx.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace nativevrl::JConvert {

/// Tables of at most this many counters for each entry are worth their passes.
constexpr std::size_t kCountersPerEntry = 16;

/// Turns counts into the place of the first element of each group, one group behind another.
inline void countsToStarts(std::vector<std::uint32_t>& counts) {
    std::uint32_t start = 0;
    for (std::uint32_t& count : counts) {
        const std::uint32_t next = start + count;
        count = start;
        start = next;
    }
}

/// Sorts the entries by column and then by row with two counting passes, equal positions keeping the order in which
/// they came: first by row into the fresh sparse array, which has room for all of them, and from there by column back
/// into the vector. So no second list of entries is needed: in the array a row is known by the place, and the row
/// table holds the columns meanwhile. The array's tables are scratch afterwards.
template <typename Entry>
void sortByCounting(std::vector<Entry>& entries, qxArray& array, unsigned rows, unsigned columns) {
    std::vector<std::uint32_t> rowStarts(rows + std::size_t{1});
    for (const Entry& entry : entries) {
        ++rowStarts[entry.row];
    }
    countsToStarts(rowStarts);
    std::vector<std::uint32_t> columnStarts(columns);
    std::uint32_t* columnOf = array.rowIndexTable();
    for (const Entry& entry : entries) {
        const std::uint32_t at = rowStarts[entry.row]++;
        columnOf[at] = entry.column;
        entry.store(array, at);
        ++columnStarts[entry.column];
    }
    countsToStarts(columnStarts);
    // Each start has moved to the end of its row.
    std::uint32_t at = 0;
    for (unsigned row = 0; row < rows; ++row) {
        for (; at < rowStarts[row]; ++at) {
            entries[columnStarts[columnOf[at]]++] = Entry::read(row, columnOf[at], array, at);
        }
    }
}

/// Sorts the entries by column and then by row. Extents far beyond the number of entries would make the counting
/// tables the larger part of the work: such entries are sorted by comparison, which leaves the order of equal
/// positions open.
template <typename Entry>
void sortEntries(std::vector<Entry>& entries, qxArray& array, unsigned rows, unsigned columns) {
    if ((std::size_t{rows} + columns) / kCountersPerEntry <= entries.size()) {
        sortByCounting(entries, array, rows, columns);
        return;
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.column != b.column ? a.column < b.column : a.row < b.row;
    });
}

}  // namespace nativevrl::JConvert
