#pragma once

#include "qx/arrayowner.h"
#include "qx/qx.h"
#include "shape.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace qx {

/// What an opaque array owns beside its storage: the payload ends with the last header over the storage.
struct OpaqueValue {
    std::string subclass;
    void* payload = nullptr;
    void (*destroy)(void*) = nullptr;
};

/// The storage behind one or more headers. Owns its blocks, its elements, its field names and its payload; the
/// header that brings `headers` to zero ends it.
struct ArrayStorage : qxStorage {
    std::atomic<std::uint32_t> headers{1};
    std::size_t slotCount = 0;                         ///< entries of the element table at `real`
    std::unique_ptr<std::vector<std::string>> fields;  ///< struct arrays only
    std::unique_ptr<OpaqueValue> opaque;               ///< opaque arrays only

    qxArray** slots() const noexcept { return static_cast<qxArray**>(real); }
};

}  // namespace qx

/// The array library's own way into headers and scopes.
struct qxArrayAccess {
    static qx::ArrayStorage& storage(const qxArray* array) noexcept {
        return static_cast<qx::ArrayStorage&>(*array->storage_);
    }

    /// New free-standing header over `storage`, whose count of headers it leaves alone; null when memory runs out.
    static qxArray* newHeader(std::uint32_t classWord, std::uint32_t flags, qx::Shape shape,
                              qx::ArrayStorage* storage) noexcept;
    static void deleteHeader(qxArray* array) noexcept;

    static void setFlag(qxArray* array, std::uint32_t flag, bool on) noexcept {
        array->flags_ = on ? array->flags_ | flag : array->flags_ & ~flag;
    }

    static void enterScope(qxArray* array, qxCallScope* scope) noexcept;
    static void leaveScope(qxArray* array) noexcept;

    /// Links of an array that is in no scope: they carry the list of what is still to be destroyed.
    static qxArray*& nextOf(qxArray* array) noexcept { return array->scopeNext_; }
};

namespace qx {

inline ArrayStorage& storageOf(const qxArray* array) noexcept { return qxArrayAccess::storage(array); }

inline Shape shapeOf(const qxArray* array) noexcept { return {array->numberOfDimensions(), array->get_dimensions()}; }

/// New free-standing array without any block; null when memory runs out.
qxArrayOwner newArray(qxClassID classId, std::uint32_t flags, Shape shape);

/// Gives the array to the call that runs on this thread, if one does, and to the caller. Null passes.
qxArray* handOut(qxArrayOwner array) noexcept;

/// Free-standing dense array of a numeric, logical or char class, or of class 0 without elements.
qxArrayOwner makeNumeric(Shape shape, qxClassID classId, bool complex, qxContents contents);

/// Gives a storage an element table of nulls; false when memory runs out.
bool makeSlotTable(ArrayStorage& storage, std::size_t slotCount) noexcept;

/// Free-standing array with an element table of `slotCount` nulls: a cell array, a struct array or a function handle. A
/// struct array with elements and no fields has no table.
qxArrayOwner makeSlotted(Shape shape, qxClassID classId, std::size_t slotCount);

/// Free-standing sparse array of class double or logical with an unset row index and unset values, and column starts
/// that are all zero.
qxArrayOwner makeSparse(std::int64_t rows, std::int64_t columns, std::uint32_t capacity, qxClassID classId,
                        bool complex);

/// The free-standing array that qxDuplicateArray hands out.
qxArrayOwner duplicate(const qxArray* source);

}  // namespace qx
