#pragma once

#include "tojava/nestedwalk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace nativevrl {

/// The compressed columns of a sparse array, read-only, with one cursor per column at its next stored element. Rows
/// must be asked for in ascending order.
class SparseColumns {
public:
    /// Raises java.lang.OutOfMemoryError when there is no room for the cursors.
    SparseColumns(JNIEnv* env, const qxArray* array)
        : rowIndex_(array->rowIndexTable()),
          columnStart_(array->columnStartTable()),
          columns_(qxGetN(array)),
          cursors_(new (std::nothrow) std::uint32_t[columns_]) {
        if (!cursors_) {
            tether::throwOutOfMemory(env);
        }
        std::copy(columnStart_, columnStart_ + columns_, cursors_.get());
    }

    std::size_t columns() const noexcept { return columns_; }

    /// Steps the cursor of a column over its elements in [firstRow, endRow), and calls `visit(row, position)` for each.
    /// An element out of its place in the order holds its column up, and all behind it in the column are absent.
    template <typename Visit>
    void takeRows(std::size_t column, std::size_t firstRow, std::size_t endRow, Visit&& visit) {
        std::uint32_t& cursor = cursors_[column];
        std::size_t expected = firstRow;
        while (cursor != columnStart_[column + 1] && rowIndex_[cursor] >= expected && rowIndex_[cursor] < endRow) {
            expected = std::size_t{rowIndex_[cursor]} + 1;
            visit(expected - 1, std::size_t{cursor});
            ++cursor;
        }
    }

private:
    const std::uint32_t* rowIndex_;
    const std::uint32_t* columnStart_;
    std::size_t columns_;
    std::unique_ptr<std::uint32_t[]> cursors_;
};

/// Builds the full matrix of a sparse array, zeros included: an array of rows of Leaf, in time linear in rows times
/// columns and the stored elements. Some rows at a time are laid out in a tile; rows that are too long for it are
/// laid out one by one, a piece at a time.
template <typename Leaf>
class SparseWalk {
    using T = typename Leaf::Element;

public:
    /// `values` is the real or the imaginary block of the array.
    SparseWalk(JNIEnv* env, const qxArray* array, const void* values, const ElementReader<T>& reader)
        : env_(env), rows_(qxGetM(array)), columns_(env, array), values_(values), reader_(reader) {}

    /// A local reference of the caller.
    jobject build() {
        auto outer = newNesting<Leaf>(env_, 1, rows_);
        const std::size_t length = columns_.columns();
        const std::size_t pitch = std::max<std::size_t>(length, 1);
        const std::size_t room = tile_.makeRoom(std::max<std::size_t>(rows_, 1) * pitch);
        const std::size_t band = std::max<std::size_t>(room / pitch, 1);
        for (std::size_t first = 0; first < rows_; first += band) {
            if (length <= room) {
                setBand(outer, first, std::min(band, rows_ - first));
            } else {
                setLongRow(outer, first, room);
            }
        }
        return outer.detach();
    }

private:
    void setBand(NewJObjectArrayProxy<JObjectProxy>& outer, std::size_t first, std::size_t count) {
        const std::size_t length = columns_.columns();
        layOut(first, count, 0, length);
        for (std::size_t i = 0; i < count; ++i) {
            Leaf leaf(env_, length);
            leaf.write(0, tile_.data() + i * length, length);
            setRow(outer, first + i, leaf);
        }
    }

    void setLongRow(NewJObjectArrayProxy<JObjectProxy>& outer, std::size_t row, std::size_t room) {
        const std::size_t length = columns_.columns();
        Leaf leaf(env_, length);
        for (std::size_t at = 0; at < length; at += room) {
            const std::size_t count = std::min(room, length - at);
            layOut(row, 1, at, count);
            leaf.write(at, tile_.data(), count);
        }
        setRow(outer, row, leaf);
    }

    /// Lays out `width` columns from `column` on of `count` rows from `first` on, next to one another.
    void layOut(std::size_t first, std::size_t count, std::size_t column, std::size_t width) {
        T* const cells = tile_.data();
        std::fill_n(cells, count * width, T{});
        for (std::size_t i = 0; i < width; ++i) {
            columns_.takeRows(column + i, first, first + count, [&](std::size_t row, std::size_t position) {
                cells[(row - first) * width + i] = reader_.at(values_, position);
            });
        }
    }

    void setRow(NewJObjectArrayProxy<JObjectProxy>& outer, std::size_t index, Leaf& leaf) {
        JObjectRef row(env_, nullptr);
        row.attach(leaf.detach());
        outer.set(static_cast<jsize>(index), row.ref());
    }

    JNIEnv* env_;
    std::size_t rows_;
    SparseColumns columns_;
    const void* values_;
    ElementReader<T> reader_;
    Tile<T> tile_;
};

}  // namespace nativevrl
