#pragma once

#include "qx/arrayowner.h"
#include "toarray/indextranslator.h"
#include "toarray/sparseentry.h"
#include "toarray/sparseorder.h"

#include <jni.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Sparse matrices from triplets. The builder is one template over what may differ: the kind of value, whether rows,
/// columns and values are lists or one value for all, and whether the dimensions are stated.
namespace nativevrl::JConvert {

/// One index per element, counting from 1 and read from a pinned list that is the caller's.
class IndexList {
public:
    explicit IndexList(const jint* first) : next_(first) {}
    template <typename Translator>
    void prepare(const Translator&) {}
    template <typename Translator>
    unsigned next(const Translator& translator) {
        return translator.translate(*next_++);
    }

private:
    const jint* next_;
};

/// One index for all elements, counting from 0.
class BroadcastIndex {
public:
    explicit BroadcastIndex(unsigned index) : index_(index) {}
    template <typename Translator>
    void prepare(const Translator& translator) {
        translator.accept(index_);
    }
    template <typename Translator>
    unsigned next(const Translator&) {
        return index_;
    }

private:
    unsigned index_;
};

/// Which value belongs to the i-th element.
struct ValueList {
    static std::size_t indexOf(std::size_t i) { return i; }
};
struct BroadcastValue {
    static std::size_t indexOf(std::size_t) { return 0; }
};

/// Dimensions just large enough for every index, those of dropped zeros among them.
class ComputedDimensions {
public:
    TrackingIndexTranslator rowTranslator() { return TrackingIndexTranslator(lastRow_); }
    TrackingIndexTranslator columnTranslator() { return TrackingIndexTranslator(lastColumn_); }
    unsigned rows() const { return lastRow_ + 1; }
    unsigned columns() const { return lastColumn_ + 1; }

private:
    unsigned lastRow_ = 0;
    unsigned lastColumn_ = 0;
};

class StatedDimensions {
public:
    StatedDimensions(unsigned rows, unsigned columns) : rows_(rows), columns_(columns) {}
    LimitingIndexTranslator rowTranslator() const { return LimitingIndexTranslator(rows_ - 1); }
    LimitingIndexTranslator columnTranslator() const { return LimitingIndexTranslator(columns_ - 1); }
    unsigned rows() const { return rows_; }
    unsigned columns() const { return columns_; }

private:
    unsigned rows_;
    unsigned columns_;
};

/// The entries that are not zero, in the order in which they came.
template <typename Entry>
struct KeptEntries {
    std::vector<Entry> entries;
    bool inOrder = true;

    void keep(const Entry& entry) {
        if (inOrder && !entries.empty()) {
            const Entry& last = entries.back();
            inOrder = entry.column > last.column || (entry.column == last.column && entry.row >= last.row);
        }
        entries.push_back(entry);
    }
};

/// Triplets whose inputs are in order with one another. The lists and the dense array of values are the caller's.
template <typename RowSource, typename ColumnSource, typename ValueSource>
struct TripletSource {
    std::size_t count;
    RowSource rows;
    ColumnSource columns;
    ValueSource values;
    const qxArray& data;
};

/// Reads the triplets. Every index is checked, also that of a zero, the row before the column.
template <typename Entry, typename Source, typename Dimensions>
KeptEntries<Entry> readTriplets(Source source, Dimensions& dimensions) {
    KeptEntries<Entry> kept;
    kept.entries.reserve(source.count);
    const auto rowTranslator = dimensions.rowTranslator();
    const auto columnTranslator = dimensions.columnTranslator();
    source.rows.prepare(rowTranslator);
    source.columns.prepare(columnTranslator);
    for (std::size_t i = 0; i < source.count; ++i) {
        const unsigned row = source.rows.next(rowTranslator);
        const unsigned column = source.columns.next(columnTranslator);
        const Entry entry = Entry::read(row, column, source.data, source.values.indexOf(i));
        if (!entry.isZero()) {
            kept.keep(entry);
        }
    }
    return kept;
}

/// Writes sorted entries into a fresh array, those of one position merged into one stored element in their order. A sum
/// of zero is stored all the same.
template <typename Entry>
void fillSparse(const std::vector<Entry>& entries, qxArray& array, unsigned columns) {
    std::uint32_t* rowIndex = array.rowIndexTable();
    std::uint32_t* columnStart = array.columnStartTable();
    std::uint32_t stored = 0;
    std::size_t column = 0;
    columnStart[0] = 0;
    for (auto entry = entries.begin(); entry != entries.end(); ++stored) {
        Entry sum = *entry;
        for (++entry; entry != entries.end() && entry->column == sum.column && entry->row == sum.row; ++entry) {
            sum.merge(*entry);
        }
        while (column < sum.column) {
            columnStart[++column] = stored;
        }
        rowIndex[stored] = sum.row;
        sum.store(array, stored);
    }
    std::fill(columnStart + column + 1, columnStart + columns + std::size_t{1}, stored);
}

/// A sparse array of the triplets with room for at least `room` elements: zeros dropped, duplicates summed (logical
/// ones ORed). Null when there is no memory for it. Throws
/// RangeMaxChecker<unsigned>::overflow_exception for entries of a matrix without rows or columns, whose limits let
/// every index pass.
template <typename Entry, typename Source, typename Dimensions>
qxArrayOwner buildSparseFromTriplets(Source source, Dimensions dimensions, std::uint32_t room) {
    auto [entries, inOrder] = readTriplets<Entry>(source, dimensions);
    const unsigned rows = dimensions.rows();
    const unsigned columns = dimensions.columns();
    if (!entries.empty() && (rows == 0 || columns == 0)) {
        throw RangeMaxChecker<unsigned>::overflow_exception();
    }
    if (!inOrder) {
        sortEntries(entries, rows, columns);
    }
    qxArrayOwner array(Entry::createArray(rows, columns, std::max(room, static_cast<std::uint32_t>(entries.size()))));
    if (array != nullptr) {
        fillSparse(entries, *array, columns);
    }
    return array;
}

}  // namespace nativevrl::JConvert
