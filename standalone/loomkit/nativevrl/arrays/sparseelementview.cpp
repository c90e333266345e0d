#include "arrays/sparseelementview.h"

#include "boundary/arrayparts.h"

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
    now_ = {array->capacity(), array->rowIndexTable(), array->realData(), array->imagData(), isComplex(array)};
    saved_ = now_;
    columnStart_ = array->columnStartTable();
    count_ = columns().count();
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
    if (now_.capacity != saved_.capacity) {
        qxSetNzmax(array_, now_.capacity);
    }
    if (now_.rowIndex != saved_.rowIndex) {
        qxSetIr(array_, now_.rowIndex);
    }
    if (now_.real != saved_.real) {
        qxSetData(array_, now_.real);
    }
    const bool hasImagMoved = now_.isComplex != saved_.isComplex || now_.imag != saved_.imag;
    if (hasImagMoved && now_.isComplex) {
        qxSetImagData(array_, now_.imag);
    } else if (hasImagMoved) {
        qxMoveImagData(array_, now_.imag);
    }
    saved_ = now_;
}

void* SparseArrayView::elementAt(void* block, std::uint32_t stored) const noexcept {
    return static_cast<std::byte*>(block) + stored * elementSize_;
}

void* SparseArrayView::findElement(SparsePosition at, bool real) const noexcept {
    void* block = real ? now_.real : now_.imag;
    const bool isPart = block != nullptr && (real || now_.isComplex);
    const StoredRange range = findRange(at);
    return isPart && range.isStored() ? elementAt(block, range.first) : nullptr;
}

bool SparseArrayView::insertOrAssign(SparsePosition at, const void* value, bool real) {
    const StoredRange range = findRange(at);
    if (!range.isStored()) {
        return insertAt(range.first, at, value, real);
    }
    if (!providePart(real)) {
        return false;
    }
    std::memcpy(elementAt(real ? now_.real : now_.imag, range.first), value, elementSize_);
    return true;
}

bool SparseArrayView::providePart(bool real) {
    if (!real && now_.imag == nullptr) {
        now_.imag = qxCalloc(now_.capacity, elementSize_);
    }
    now_.isComplex = now_.isComplex || (!real && now_.imag != nullptr);
    return real || now_.isComplex;
}

void SparseArrayView::moveTail(std::uint32_t from, std::uint32_t to) {
    const std::size_t elements = count_ - from;
    std::memmove(now_.rowIndex + to, now_.rowIndex + from, elements * sizeof *now_.rowIndex);
    for (void* block : {now_.real, now_.imag}) {
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
    now_.rowIndex[stored] = at.row;
    if (now_.imag != nullptr) {
        std::memset(elementAt(real ? now_.imag : now_.real, stored), 0, elementSize_);
    }
    std::memcpy(elementAt(real ? now_.real : now_.imag, stored), value, elementSize_);
    std::for_each(columnStart_ + at.column + 1, columnStart_ + columns_ + 1, [](std::uint32_t& start) { ++start; });
    ++count_;
    return true;
}

bool SparseArrayView::erase(SparsePosition at) {
    const StoredRange range = findRange(at);
    return !range.isStored() || eraseAt(range.first, at);
}

bool SparseArrayView::eraseAt(std::uint32_t stored, SparsePosition at) {
    moveTail(stored + 1, stored);
    std::for_each(columnStart_ + at.column + 1, columnStart_ + columns_ + 1, [](std::uint32_t& start) { --start; });
    --count_;
    return applyShrink(shrunkCapacity(now_.capacity, count_));
}

bool SparseArrayView::reserve(std::uint32_t needed) {
    if (now_.capacity >= needed) {
        return true;
    }
    const std::uint64_t elements = std::uint64_t{rows_} * columns_;
    const auto limit =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(elements, std::numeric_limits<std::uint32_t>::max()));
    const std::uint32_t grown = growCapacity(needed, now_.capacity, limit);
    // Tables that hold a position twice can be full already.
    const bool isRoom = grown >= needed;
    if (!isRoom || !resize(now_.real, grown, elementSize_) || !resize(now_.imag, grown, elementSize_) ||
        !resize(now_.rowIndex, grown, sizeof *now_.rowIndex)) {
        return false;
    }
    now_.capacity = grown;
    return true;
}

bool SparseArrayView::applyShrink(std::uint32_t newCapacity) {
    if (newCapacity < count_ || newCapacity >= now_.capacity) {
        return true;
    }
    if (!resize(now_.real, newCapacity, elementSize_)) {
        return false;
    }
    // The first block is smaller from here on: the capacity must not promise more, whatever becomes of the others.
    now_.capacity = newCapacity;
    return resize(now_.imag, newCapacity, elementSize_) && resize(now_.rowIndex, newCapacity, sizeof *now_.rowIndex);
}

}  // namespace nativevrl
