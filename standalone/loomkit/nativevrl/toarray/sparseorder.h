#pragma once

#include "qx/qx.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <numeric>
#include <type_traits>
#include <vector>

namespace nativevrl::JConvert {

/// Puts entries into a list of the same length, sorted by a key below `keys`; those of one key keep their order.
template <typename Entry>
void sortByCounting(const Entry* entries, std::size_t count, Entry* sorted, unsigned Entry::*key, std::size_t keys) {
    std::vector<std::uint32_t> places(keys);
    for (std::size_t i = 0; i < count; ++i) {
        ++places[entries[i].*key];
    }
    std::exclusive_scan(places.begin(), places.end(), places.begin(), std::uint32_t{0});
    for (std::size_t i = 0; i < count; ++i) {
        sorted[places[entries[i].*key]++] = entries[i];
    }
}

struct FreeBlock {
    void operator()(void* block) const noexcept { qxFree(block); }
};

/// Sorts the entries by column and then by row, equal positions keeping the order in which they came. Extents far
/// beyond the number of entries would make the counting tables the larger part of the work: such entries are compared.
template <typename Entry>
void sortEntries(std::vector<Entry>& entries, unsigned rows, unsigned columns) {
    constexpr std::size_t countersPerEntry = 16;
    static_assert(std::is_trivially_copyable_v<Entry>);
    if ((std::size_t{rows} + columns) / countersPerEntry <= entries.size()) {
        // The array library keeps large blocks and has large pages for them, which scattered writes thrive on.
        const std::size_t count = entries.size();
        const std::unique_ptr<Entry, FreeBlock> byRow(static_cast<Entry*>(qxMalloc(count * sizeof(Entry))));
        if (byRow == nullptr) {
            throw std::bad_alloc();
        }
        sortByCounting(entries.data(), count, byRow.get(), &Entry::row, rows);
        sortByCounting(byRow.get(), count, entries.data(), &Entry::column, columns);
        return;
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.column != b.column ? a.column < b.column : a.row < b.row;
    });
}

}  // namespace nativevrl::JConvert
