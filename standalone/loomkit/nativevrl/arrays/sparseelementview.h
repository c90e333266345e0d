#pragma once

#include "layout/sparsecolumns.h"
#include "qx/qx.h"

#include <cstddef>
#include <cstdint>

/// Editing sparse arrays element by element, in place.
namespace nativevrl {

/// New capacity of a sparse array's tables for `needed` stored elements, from `current`: it doubles, in multiples of
/// 64, up to 5% of a full matrix, then grows by 1% at a time, and never exceeds `limit`, the full matrix. Throws
/// boost::numeric::positive_overflow for an intermediate value beyond 32 bits.
std::uint32_t growCapacity(std::uint32_t needed, std::uint32_t current, std::uint32_t limit);

/// The capacity after a removal that leaves `count` elements: cut to the count as soon as it is 1.5 times as much.
std::uint32_t shrunkCapacity(std::uint32_t capacity, std::uint32_t count);

/// A sparse array opened for one native call, whatever its element type. The view works on copies of the array's
/// pointers; what an edit has moved goes back into the array when the view flushes, at the latest when it ends, so no
/// exception can lose a table. While a view lives nothing else may edit the array.
///
/// Values lie at the positions of their row indices. Edits return false when memory runs out, or when tables that don't
/// fit together leave no room; the tables are then as consistent as they were, and the element is as it was.
class SparseArrayView {
public:
    SparseArrayView() = default;
    /// Borrows the array, or with `owned` destroys it at the end.
    explicit SparseArrayView(qxArray* array, bool owned = false) { attach(array, owned); }
    ~SparseArrayView() { end(); }
    SparseArrayView(const SparseArrayView&) = delete;
    SparseArrayView& operator=(const SparseArrayView&) = delete;

    /// Opens an array; nothing happens when it is the one that is open.
    void attach(qxArray* array, bool owned = false);

    /// Number of stored elements; 0 for an array without tables.
    std::uint32_t count() const noexcept { return count_; }
    std::uint32_t capacity() const noexcept { return now_.capacity; }

    /// The columns as the last edit left them; valid until the next.
    SparseColumns columns() const noexcept { return {rows_, columns_, now_.rowIndex, columnStart_}; }

    /// Splits an index in column-major order, which must lie below the number of elements.
    SparsePosition positionOf(std::size_t index) const noexcept { return columns().positionOf(index); }

    StoredRange findRange(SparsePosition at) const noexcept { return columns().findRange(at); }
    StoredRange findRangeByIndex(std::size_t index) const noexcept { return findRange(positionOf(index)); }

    /// The element in one part; null when it is not stored or there is no such part.
    void* findElement(SparsePosition at, bool real) const noexcept;

    /// Stores the element's bytes in one part, in its place or in a new one.
    bool insertOrAssign(SparsePosition at, const void* value, bool real);
    /// Makes room at a stored position for an element that is not stored; its other part becomes zero.
    bool insertAt(std::uint32_t stored, SparsePosition at, const void* value, bool real);
    bool eraseAt(std::uint32_t stored, SparsePosition at);
    /// Removes both parts of an element, if it is stored.
    bool erase(SparsePosition at);
    bool erase(std::size_t index) { return erase(positionOf(index)); }

    /// Makes room for `needed` stored elements.
    bool reserve(std::uint32_t needed);

    /// Writes back into the array what has moved.
    void flush();

private:
    /// What the array and its storage hold for the view, apart from the column starts, which are edited in place.
    struct Tables {
        std::uint32_t capacity = 0;
        std::uint32_t* rowIndex = nullptr;
        void* real = nullptr;
        void* imag = nullptr;    ///< null unless some header over the storage is complex: it moves with the rest
        bool isComplex = false;  ///< whether this array is complex: to a real one `imag` is no part of an element
    };

    void end();
    /// Gives a real array an imaginary block of zeros when that part is to be written.
    bool providePart(bool real);
    bool applyShrink(std::uint32_t newCapacity);
    void moveTail(std::uint32_t from, std::uint32_t to);
    void* elementAt(void* block, std::uint32_t stored) const noexcept;

    bool owned_ = false;
    qxArray* array_ = nullptr;
    std::uint32_t rows_ = 0;
    std::uint32_t columns_ = 0;
    std::uint32_t count_ = 0;
    std::uint32_t* columnStart_ = nullptr;  // the end of column c is columnStart_[c + 1]
    std::size_t elementSize_ = 0;
    Tables now_;
    Tables saved_;
};

/// The view with values of type E, the element type of the array's class.
template <typename E>
class SparseElementView : public SparseArrayView {
public:
    using SparseArrayView::SparseArrayView;

    /// Writes one part of an element. An element whose parts are both zero is removed, so that no zero is stored;
    /// NaN is stored. False when memory runs out.
    bool setElement(SparsePosition at, E value, bool real) {
        if (isZero(value)) {
            const auto* other = static_cast<const E*>(findElement(at, !real));
            if (other == nullptr || isZero(*other)) {
                erase(at);
                return true;
            }
        }
        return insertOrAssign(at, &value, real);
    }

    bool setElement(std::size_t index, E value, bool real) { return setElement(positionOf(index), value, real); }

private:
    /// Negative zero is zero, NaN is not.
    static bool isZero(E value) noexcept { return value == E{}; }
};

}  // namespace nativevrl
