#include "arrays/sparseelementview.h"

#include <boost/numeric/conversion/cast.hpp>

#include <algorithm>
#include <cstring>
#include <limits>

namespace nativevrl {

namespace {

/// The next multiple of 64, 64 itself for 0.
std::uint32_t roundUp64(std::uint64_t value) {
    return boost::numeric_cast<std::uint32_t>(value == 0 ? 64 : (value + 63) / 64 * 64);
}

/// Moves a block, where there is one, to a new number of elements.
template <typename Block>
bool resize(Block*& block, std::uint32_t elements, std::size_t elementSize) {
    if (block == nullptr) {
        return true;
    }
    void* moved = qxRealloc(block, elements * elementSize);
    if (moved == nullptr) {
        return false;
    }
    block = static_cast<Block*>(moved);
    return true;
}

}  // namespace

std::uint32_t growCapacity(std::uint32_t needed, std::uint32_t current, std::uint32_t limit) {
    if (current >= needed) {
        return std::min(current, limit);
    }
    const std::uint32_t doublingEnd = roundUp64(std::uint64_t{limit} * 5 / 100);
    while (current < doublingEnd) {
        current = roundUp64(std::uint64_t{current} * 2 + 1);
        if (current >= needed) {
            return std::min(current, limit);
        }
    }
    const std::uint64_t step = roundUp64(limit / 100);
    const std::uint64_t steps = (needed - doublingEnd + step - 1) / step;
    const std::uint64_t grown = doublingEnd + steps * step;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(grown, limit));
}

std::uint32_t shrunkCapacity(std::uint32_t capacity, std::uint32_t count) {
    return std::uint64_t{capacity} * 2 < std::uint64_t{count} * 3 ? capacity : count;
}

void SparseArrayView::attach(qxArray* array, bool owned) {
    if (array == array_) {
        return;
    }
    end();
    array_ = array;
    owned_ = owned;
    rows_ = array->get_dimensions()[0];
    columns_ = static_cast<std::uint32_t>(qxGetN(array));
    const bool isComplex = array->hasComplexFlag() && array->imagData() != nullptr;
    saved_ = {array->capacity(), array->rowIndexTable(), array->realData(), array->imagData(), isComplex};
    isComplex_ = isComplex;
    capacity_ = saved_.capacity;
    rowIndex_ = saved_.rowIndex;
    real_ = saved_.real;
    imag_ = saved_.imag;
    columnStart_ = array->columnStartTable();
    count_ = columnStart_ == nullptr ? 0 : columnStart_[columns_];
    elementSize_ = qxGetElementSize(array);
}

void SparseArrayView::end() {
    if (array_ == nullptr) {
        return;
    }
    flush();
    if (owned_) {
        qxDestroyArray(array_);
    }
    array_ = nullptr;
}

void SparseArrayView::flush() {
    if (capacity_ != saved_.capacity) {
        qxSetNzmax(array_, capacity_);
    }
    if (rowIndex_ != saved_.rowIndex) {
        qxSetIr(array_, rowIndex_);
    }
    if (real_ != saved_.real) {
        qxSetData(array_, real_);
    }
    if (isComplex_ != saved_.isComplex || imag_ != saved_.imag) {
        const auto setImag = isComplex_ ? qxSetImagData : qxMoveImagData;
        setImag(array_, imag_);
    }
    saved_ = {capacity_, rowIndex_, real_, imag_, isComplex_};
}

SparsePosition SparseArrayView::positionOf(std::size_t index) const noexcept {
    return {static_cast<std::uint32_t>(index % rows_), static_cast<std::uint32_t>(index / rows_ % columns_)};
}

SparseArrayView::Range SparseArrayView::findRange(SparsePosition at) const noexcept {
    const auto [first, last] =
        std::equal_range(rowIndex_ + columnStart_[at.column], rowIndex_ + columnStart_[at.column + 1], at.row);
    return {static_cast<std::uint32_t>(first - rowIndex_), static_cast<std::uint32_t>(last - rowIndex_)};
}

void* SparseArrayView::elementAt(void* block, std::uint32_t stored) const noexcept {
    return static_cast<std::byte*>(block) + stored * elementSize_;
}

void* SparseArrayView::findElement(SparsePosition at, bool real) const noexcept {
    void* block = real ? real_ : imag_;
    const bool isPart = block != nullptr && (real || isComplex_);
    const Range range = findRange(at);
    return isPart && range.isStored() ? elementAt(block, range.first) : nullptr;
}

bool SparseArrayView::insertOrAssign(SparsePosition at, const void* value, bool real) {
    const Range range = findRange(at);
    if (!range.isStored()) {
        return insertAt(range.first, at, value, real);
    }
    if (!providePart(real)) {
        return false;
    }
    std::memcpy(elementAt(real ? real_ : imag_, range.first), value, elementSize_);
    return true;
}

bool SparseArrayView::providePart(bool real) {
    if (!real && imag_ == nullptr) {
        imag_ = qxCalloc(capacity_, elementSize_);
    }
    isComplex_ = isComplex_ || (!real && imag_ != nullptr);
    return real || isComplex_;
}

void SparseArrayView::moveTail(std::uint32_t from, std::uint32_t to) {
    const std::size_t elements = count_ - from;
    std::memmove(rowIndex_ + to, rowIndex_ + from, elements * sizeof *rowIndex_);
    for (void* block : {real_, imag_}) {
        if (block != nullptr) {
            std::memmove(elementAt(block, to), elementAt(block, from), elements * elementSize_);
        }
    }
}

bool SparseArrayView::insertAt(std::uint32_t stored, SparsePosition at, const void* value, bool real) {
    const bool isFull = count_ == std::numeric_limits<std::uint32_t>::max();
    if (isFull || !reserve(count_ + 1) || !providePart(real)) {
        return false;
    }
    moveTail(stored, stored + 1);
    rowIndex_[stored] = at.row;
    if (imag_ != nullptr) {
        std::memset(elementAt(real ? imag_ : real_, stored), 0, elementSize_);
    }
    std::memcpy(elementAt(real ? real_ : imag_, stored), value, elementSize_);
    std::for_each(columnStart_ + at.column + 1, columnStart_ + columns_ + 1, [](std::uint32_t& start) { ++start; });
    ++count_;
    return true;
}

bool SparseArrayView::erase(SparsePosition at) {
    const Range range = findRange(at);
    return !range.isStored() || eraseAt(range.first, at);
}

bool SparseArrayView::eraseAt(std::uint32_t stored, SparsePosition at) {
    moveTail(stored + 1, stored);
    std::for_each(columnStart_ + at.column + 1, columnStart_ + columns_ + 1, [](std::uint32_t& start) { --start; });
    --count_;
    return applyShrink(shrunkCapacity(capacity_, count_));
}

bool SparseArrayView::reserve(std::uint32_t needed) {
    if (capacity_ >= needed) {
        return true;
    }
    const std::uint64_t elements = std::uint64_t{rows_} * columns_;
    const auto limit =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(elements, std::numeric_limits<std::uint32_t>::max()));
    const std::uint32_t grown = growCapacity(needed, capacity_, limit);
    if (!resize(real_, grown, elementSize_) || !resize(imag_, grown, elementSize_) ||
        !resize(rowIndex_, grown, sizeof *rowIndex_)) {
        return false;
    }
    capacity_ = grown;
    return true;
}

bool SparseArrayView::applyShrink(std::uint32_t newCapacity) {
    if (newCapacity < count_ || newCapacity >= capacity_) {
        return true;
    }
    if (!resize(real_, newCapacity, elementSize_)) {
        return false;
    }
    // The first block is smaller from here on: the capacity must not promise more, whatever becomes of the others.
    capacity_ = newCapacity;
    return resize(imag_, newCapacity, elementSize_) && resize(rowIndex_, newCapacity, sizeof *rowIndex_);
}

}  // namespace nativevrl
