#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace nativevrl::JConvert {

/// Sorts entries by a key below `keys`; those of one key keep their order.
template <typename Entry>
void sortByCounting(std::vector<Entry>& entries, unsigned Entry::*key, std::size_t keys) {
    std::vector<std::uint32_t> places(keys);
    for (const Entry& entry : entries) {
        ++places[entry.*key];
    }
    std::exclusive_scan(places.begin(), places.end(), places.begin(), std::uint32_t{0});
    std::vector<Entry> sorted(entries.size());
    for (const Entry& entry : entries) {
        sorted[places[entry.*key]++] = entry;
    }
    entries.swap(sorted);
}

/// Sorts the entries by column and then by row, equal positions keeping the order in which they came. Extents far
/// beyond the number of entries would make the counting tables the larger part of the work: such entries are compared.
template <typename Entry>
void sortEntries(std::vector<Entry>& entries, unsigned rows, unsigned columns) {
    constexpr std::size_t countersPerEntry = 16;
    if ((std::size_t{rows} + columns) / countersPerEntry <= entries.size()) {
        sortByCounting(entries, &Entry::row, rows);
        sortByCounting(entries, &Entry::column, columns);
        return;
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.column != b.column ? a.column < b.column : a.row < b.row;
    });
}

}  // namespace nativevrl::JConvert
