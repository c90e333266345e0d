#pragma once

#include "layout/sparsecolumns.h"
#include "proxies/javalength.h"
#include "proxies/jobjectarrayproxy.h"
#include "tojava/gathertile.h"
#include "tojava/leaves.h"
#include "tojava/partview.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <numeric>

namespace nativevrl {

/// The stored elements of a sparse array row by row, in the order of their columns: what reading takes beside the
/// result grows with the rows and the stored elements, however many columns there are.
class StoredRows {
public:
    struct Element {
        std::uint32_t column;
        std::uint32_t position;  ///< in the array's blocks of values
    };

    /// Raises java.lang.OutOfMemoryError when there is no room.
    StoredRows(JNIEnv* env, const SparseColumns& columns) {
        if (columns.count() == 0 || columns.rows == 0) {
            return;
        }
        // Two entries ahead of its row stands its count, one ahead then where it begins and in the end where it ends.
        starts_ = allocate<std::uint32_t>(env, std::size_t{columns.rows} + 2);
        std::fill_n(starts_.get(), std::size_t{columns.rows} + 2, 0U);
        columns.forEachInOrder([&](std::size_t row, auto, auto) { ++starts_[row + 2]; });
        std::partial_sum(starts_.get(), starts_.get() + columns.rows + 2, starts_.get());
        elements_ = allocate<Element>(env, starts_[columns.rows + 1]);
        columns.forEachInOrder([&](std::size_t row, std::uint32_t column, std::uint32_t position) {
            elements_[starts_[row + 1]++] = {column, position};
        });
    }

    const Element* begin(std::size_t row) const noexcept { return starts_ ? elements_.get() + starts_[row] : nullptr; }
    const Element* end(std::size_t row) const noexcept { return starts_ ? begin(row + 1) : nullptr; }

private:
    template <typename Entry>
    static std::unique_ptr<Entry[]> allocate(JNIEnv* env, std::size_t count) {
        std::unique_ptr<Entry[]> entries(new (std::nothrow) Entry[count]);
        if (!entries) {
            tether::throwOutOfMemory(env);
        }
        return entries;
    }

    std::unique_ptr<std::uint32_t[]> starts_;
    std::unique_ptr<Element[]> elements_;
};

/// Builds the full matrix of a sparse array, zeros included: an array of rows of Leaf, in time linear in rows times
/// columns and the stored elements. A row is laid out in a tile, a piece at a time where it is too long for it, and
/// only the places of its stored elements are written and cleared again.
template <typename Leaf>
class SparseWalk {
    using T = typename Leaf::Element;
    using Stored = StoredRows::Element;

public:
    SparseWalk(JNIEnv* env, const SparseColumns& columns, const PartView<T>& values)
        : env_(env), columns_(columns), values_(values) {}

    /// A local reference of the caller.
    jobject build() {
        NewJObjectArrayProxy<JObjectProxy> rows(env_, Leaf::className(), javaLength(env_, columns_.rows));
        const StoredRows stored(env_, columns_);
        const std::size_t room = tile_.makeRoom(columns_.columns);
        std::fill_n(tile_.row(0), std::min<std::size_t>(room, columns_.columns), T{});
        for (std::uint32_t row = 0; row < columns_.rows; ++row) {
            Leaf leaf(env_, columns_.columns);
            writeRow(leaf, stored.begin(row), stored.end(row), room);
            rows.set(static_cast<jsize>(row), leaf.row());
        }
        return rows.detach();
    }

private:
    void writeRow(Leaf& leaf, const Stored* next, const Stored* end, std::size_t room) {
        T* const cells = tile_.row(0);
        for (std::size_t at = 0; at < columns_.columns; at += room) {
            const std::size_t count = std::min<std::size_t>(room, columns_.columns - at);
            const Stored* const first = next;
            for (; next != end && next->column < at + count; ++next) {
                cells[next->column - at] = values_.at(next->position);
            }
            leaf.write(at, cells, count);
            std::for_each(first, next, [&](const Stored& one) { cells[one.column - at] = T{}; });
        }
    }

    JNIEnv* env_;
    SparseColumns columns_;
    PartView<T> values_;
    GatherTile<T> tile_;
};

}  // namespace nativevrl
