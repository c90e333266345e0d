#include "sparse.h"

#include "classtable.h"
#include "storage.h"

#include <algorithm>
#include <cstring>

namespace qx {

std::uint32_t storedCount(const qxArray* sparse) noexcept {
    const std::uint32_t* starts = sparse->columnStartTable();
    return starts == nullptr ? 0 : starts[sparse->get_dimensions()[1]];
}

bool hasValidTables(const qxArray* sparse) noexcept {
    const std::uint32_t rows = sparse->get_dimensions()[0];
    const std::uint32_t columns = sparse->get_dimensions()[1];
    const std::uint32_t* starts = sparse->columnStartTable();
    const std::uint32_t* rowIndex = sparse->rowIndexTable();
    if (starts == nullptr || starts[0] != 0 || !std::is_sorted(starts, starts + columns + 1)) {
        return false;
    }
    const std::uint32_t stored = starts[columns];
    if (stored > sparse->capacity() || (stored != 0 && (rowIndex == nullptr || sparse->realData() == nullptr))) {
        return false;
    }
    if (std::any_of(rowIndex, rowIndex + stored, [rows](std::uint32_t row) { return row >= rows; })) {
        return false;
    }
    const auto doesNotRise = [](std::uint32_t row, std::uint32_t next) { return row >= next; };
    for (std::uint32_t column = 0; column < columns; ++column) {
        const std::uint32_t* end = rowIndex + starts[column + 1];
        if (std::adjacent_find(rowIndex + starts[column], end, doesNotRise) != end) {
            return false;
        }
    }
    return true;
}

qxArrayOwner makeSparse(std::int64_t rows, std::int64_t columns, std::uint32_t capacity, qxClassID classId,
                        bool complex) {
    const bool fits = rows >= 0 && columns >= 0 && rows <= kMaxExtent && columns <= kMaxExtent;
    if (!fits) {
        return nullptr;
    }
    const bool hasImag = complex && canBeComplex(classId);
    const GivenShape given(static_cast<std::uint32_t>(rows), static_cast<std::uint32_t>(columns));
    qxArrayOwner array = newArray(classId, qxSPARSE_FLAG | (hasImag ? qxCOMPLEX_FLAG : 0), given.shape());
    if (!array) {
        return nullptr;
    }
    ArrayStorage& storage = storageOf(array.get());
    const std::size_t elementSize = classInfo(classId).elementSize;
    storage.capacity = capacity;
    storage.columnStart =
        static_cast<std::uint32_t*>(qxCalloc(static_cast<std::size_t>(columns) + 1, sizeof(std::uint32_t)));
    storage.rowIndex = static_cast<std::uint32_t*>(qxCalloc(capacity, sizeof(std::uint32_t)));
    storage.real = qxCalloc(capacity, elementSize);
    storage.imag = hasImag ? qxCalloc(capacity, elementSize) : nullptr;
    const bool isWhole = storage.columnStart != nullptr && storage.rowIndex != nullptr && storage.real != nullptr &&
                         (storage.imag != nullptr) == hasImag;
    return isWhole ? std::move(array) : nullptr;
}

namespace {

/// Walks the non-zero elements of a dense matrix column by column. Visitor: row, column, linear index.
template <typename Element, typename Visitor>
void forEachNonZero(const qxArray* dense, Visitor visit) {
    const auto* real = static_cast<const Element*>(dense->realData());
    const auto* imag = qxIsComplex(dense) ? static_cast<const Element*>(dense->imagData()) : nullptr;
    const std::uint32_t rows = dense->get_dimensions()[0];
    const std::uint32_t columns = dense->get_dimensions()[1];
    std::size_t index = 0;
    for (std::uint32_t column = 0; column < columns; ++column) {
        for (std::uint32_t row = 0; row < rows; ++row, ++index) {
            if (real[index] != Element() || (imag != nullptr && imag[index] != Element())) {
                visit(row, column, index);
            }
        }
    }
}

template <typename Element>
qxArrayOwner sparseOf(const qxArray* dense) {
    std::uint32_t count = 0;
    forEachNonZero<Element>(dense, [&](std::uint32_t, std::uint32_t, std::size_t) { ++count; });
    const std::uint32_t columns = dense->get_dimensions()[1];
    qxArrayOwner sparse =
        makeSparse(dense->get_dimensions()[0], columns, count, qxGetClassID(dense), qxIsComplex(dense));
    if (!sparse) {
        return nullptr;
    }
    const ArrayStorage& from = storageOf(dense);
    const ArrayStorage& to = storageOf(sparse.get());
    std::uint32_t stored = 0;
    forEachNonZero<Element>(dense, [&](std::uint32_t row, std::uint32_t column, std::size_t index) {
        to.rowIndex[stored] = row;
        static_cast<Element*>(to.real)[stored] = static_cast<const Element*>(from.real)[index];
        if (to.imag != nullptr) {
            static_cast<Element*>(to.imag)[stored] = static_cast<const Element*>(from.imag)[index];
        }
        to.columnStart[column + 1] = ++stored;
    });
    // A column without elements starts where the one before it ends.
    for (std::uint32_t column = 0; column < columns; ++column) {
        to.columnStart[column + 1] = std::max(to.columnStart[column], to.columnStart[column + 1]);
    }
    return sparse;
}

}  // namespace

}  // namespace qx

qxArray* qxCreateSparse(std::int64_t rows, std::int64_t columns, std::uint32_t capacity, qxComplexity complexity) {
    return qx::handOut(qx::makeSparse(rows, columns, capacity, qxDOUBLE_CLASS, complexity == qxCOMPLEX));
}

qxArray* qxCreateSparseLogicalMatrix(std::int64_t rows, std::int64_t columns, std::uint32_t capacity) {
    return qx::handOut(qx::makeSparse(rows, columns, capacity, qxLOGICAL_CLASS, false));
}

qxArray* qxMustBeSparse(const qxArray* source) {
    if (source == nullptr) {
        return nullptr;
    }
    if (source->isSparse()) {
        return qxCreateSharedDataCopy(source);
    }
    if (source->numberOfDimensions() != 2 || (source->realData() == nullptr && !qxIsEmpty(source))) {
        return nullptr;
    }
    switch (qxGetClassID(source)) {
        case qxDOUBLE_CLASS:
            return qx::handOut(qx::sparseOf<double>(source));
        case qxLOGICAL_CLASS:
            return qx::handOut(qx::sparseOf<std::uint8_t>(source));
        default:
            return nullptr;
    }
}
