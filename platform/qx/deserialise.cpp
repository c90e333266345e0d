#include <algorithm>
#include <cstring>
#include <new>

#include "cborreader.h"
#include "fieldnames.h"
#include "serialform.h"
#include "sparse.h"
#include "storage.h"

namespace qx {

namespace {

/// Builds the array behind a serialised form. A count is believed only as far as bytes are left to bear it out, so that
/// the memory taken stays within a constant factor of the input. Every function returns null or false for bad bytes.
class Deserialiser {
public:
    Deserialiser(const unsigned char* bytes, std::size_t count) noexcept : reader_(bytes, count), slotsLeft_(count) {}

    qxArrayOwner run() {
        std::uint64_t items = 0;
        std::uint64_t version = 0;
        if (!reader_.readArrayStart(items) || items != 2 || !reader_.readUnsigned(version) ||
            version != kSerialVersion) {
            return nullptr;
        }
        CborItem head;
        qxArrayOwner array = reader_.read(head) ? readArray(head, 1) : nullptr;
        return reader_.remaining() == 0 ? std::move(array) : nullptr;
    }

private:
    using Extents = std::vector<std::uint32_t>;

    static Shape shapeOfExtents(const Extents& extents) {
        return {static_cast<std::uint32_t>(extents.size()), extents.data()};
    }

    /// `head` is the item that has been read already: the start of the array's list.
    qxArrayOwner readArray(const CborItem& head, int depth) {
        std::uint64_t classId = 0;
        Extents extents;
        if (head.kind != CborItem::Kind::array || depth > kMaxSerialDepth || !reader_.readUnsigned(classId) ||
            !readExtents(extents)) {
            return nullptr;
        }
        if (hasNumericStorage(classId)) {
            return readNumeric(static_cast<qxClassID>(classId), extents, head.value);
        }
        switch (classId) {
            case qxUNKNOWN_CLASS:
                return head.value == kUnknownItems
                           ? makeNumeric(shapeOfExtents(extents), qxUNKNOWN_CLASS, false, Fill::zeros)
                           : nullptr;
            case qxCELL_CLASS:
                return head.value == kCellItems ? readCell(extents, depth) : nullptr;
            case qxSTRUCT_CLASS:
                return head.value == kStructItems ? readStruct(extents, depth) : nullptr;
            case qxFUNCTION_CLASS:
                return head.value == kCellItems ? readFunctionHandle(extents, depth) : nullptr;
            default:
                return nullptr;
        }
    }

    bool readExtents(Extents& extents) {
        std::uint64_t count = 0;
        if (!reader_.readArrayStart(count) || count < 2) {
            return false;
        }
        for (; count != 0; --count) {
            std::uint64_t extent = 0;
            if (!reader_.readUnsigned(extent) || extent > kMaxExtent) {
                return false;
            }
            extents.push_back(static_cast<std::uint32_t>(extent));
        }
        return true;
    }

    qxArrayOwner readNumeric(qxClassID classId, const Extents& extents, std::uint64_t items) {
        const bool complex = items == kDenseItems + 1 || items == kSparseItems + 1;
        if (complex && !canBeComplex(classId)) {
            return nullptr;
        }
        if (items == kDenseItems || items == kDenseItems + 1) {
            return readDense(classId, extents, complex);
        }
        const bool isSparse = items == kSparseItems || items == kSparseItems + 1;
        return isSparse && isSparseClass(classId) && extents.size() == 2 ? readSparse(classId, extents, complex)
                                                                         : nullptr;
    }

    qxArrayOwner readDense(qxClassID classId, const Extents& extents, bool complex) {
        const Shape shape = shapeOfExtents(extents);
        const auto count = denseElementCount(shape);
        std::string_view real;
        std::string_view imag;
        if (!count || !readPart(classId, *count, real) || (complex && !readPart(classId, *count, imag))) {
            return nullptr;
        }
        qxArrayOwner array = makeNumeric(shape, classId, complex, Fill::unset);
        if (array) {
            fillParts(array.get(), real, imag);
        }
        return array;
    }

    qxArrayOwner readSparse(qxClassID classId, const Extents& extents, bool complex) {
        constexpr std::size_t entry = sizeof(std::uint32_t);
        std::string_view starts;
        std::string_view rows;
        if (!reader_.readTagged(kIndexTag, starts) || starts.size() != (std::size_t{extents[1]} + 1) * entry ||
            !reader_.readTagged(kIndexTag, rows) || rows.size() % entry != 0 ||
            rows.size() / entry > kMaxDenseElements) {
            return nullptr;
        }
        const std::size_t stored = rows.size() / entry;
        std::string_view real;
        std::string_view imag;
        if (!readPart(classId, stored, real) || (complex && !readPart(classId, stored, imag))) {
            return nullptr;
        }
        qxArrayOwner array = makeSparse(extents[0], extents[1], static_cast<std::uint32_t>(stored), classId, complex);
        if (!array) {
            return nullptr;
        }
        copyBytes(array->columnStartTable(), starts);
        copyBytes(array->rowIndexTable(), rows);
        fillParts(array.get(), real, imag);
        return hasValidTables(array.get()) && storedCount(array.get()) == stored ? std::move(array) : nullptr;
    }

    /// The bytes of `count` elements of one part.
    bool readPart(qxClassID classId, std::size_t count, std::string_view& part) {
        if (!reader_.readTagged(classInfo(classId).typedArrayTag, part) ||
            part.size() != count * classInfo(classId).elementSize) {
            return false;
        }
        const auto isTruth = [](char byte) { return byte == 0 || byte == 1; };
        return classId != qxLOGICAL_CLASS || std::all_of(part.begin(), part.end(), isTruth);
    }

    static void copyBytes(void* target, std::string_view bytes) {
        if (!bytes.empty()) {
            std::memcpy(target, bytes.data(), bytes.size());
        }
    }

    static void fillParts(qxArray* array, std::string_view real, std::string_view imag) {
        copyBytes(array->realData(), real);
        if (array->imagData() != nullptr) {
            copyBytes(array->imagData(), imag);
        }
    }

    qxArrayOwner readCell(const Extents& extents, int depth) {
        const auto count = denseElementCount(shapeOfExtents(extents));
        return count ? readSlots(extents, qxCELL_CLASS, *count, depth) : nullptr;
    }

    qxArrayOwner readStruct(const Extents& extents, int depth) {
        const auto count = denseElementCount(shapeOfExtents(extents));
        auto names = std::make_unique<std::vector<std::string>>();
        if (!count || !readFieldNames(*names)) {
            return nullptr;
        }
        std::size_t slotCount = 0;
        if (__builtin_mul_overflow(*count, names->size(), &slotCount)) {
            return nullptr;
        }
        qxArrayOwner array = readSlots(extents, qxSTRUCT_CLASS, slotCount, depth);
        if (array) {
            storageOf(array.get()).fields = std::move(names);
        }
        return array;
    }

    bool readFieldNames(std::vector<std::string>& names) {
        std::uint64_t count = 0;
        if (!reader_.readArrayStart(count)) {
            return false;
        }
        for (; count != 0; --count) {
            CborItem item;
            if (!reader_.read(item) || (item.kind != CborItem::Kind::text && item.kind != CborItem::Kind::bytes)) {
                return false;
            }
            std::string name(reinterpret_cast<const char*>(item.data), static_cast<std::size_t>(item.value));
            const WrittenName given = {std::move(name), item.kind == CborItem::Kind::text};
            if (given.bytes.empty() || !(given == writtenName(given.bytes))) {
                return false;
            }
            names.push_back(given.bytes);
        }
        return areDistinct(names);
    }

    qxArrayOwner readFunctionHandle(const Extents& extents, int depth) {
        if (extents != Extents{1, 1}) {
            return nullptr;
        }
        qxArrayOwner handle = readSlots(extents, qxFUNCTION_CLASS, 1, depth);
        return handle && isFunctionName(qxGetCell(handle.get(), 0)) ? std::move(handle) : nullptr;
    }

    /// Every slot of every array takes a byte of its own, which bounds all element tables together.
    qxArrayOwner readSlots(const Extents& extents, qxClassID classId, std::size_t slotCount, int depth) {
        std::uint64_t items = 0;
        if (!reader_.readArrayStart(items) || items != slotCount || slotCount > slotsLeft_) {
            return nullptr;
        }
        slotsLeft_ -= slotCount;
        qxArrayOwner array = makeSlotted(shapeOfExtents(extents), classId, slotCount);
        for (std::size_t slot = 0; array && slot < slotCount; ++slot) {
            CborItem head;
            if (!reader_.read(head)) {
                return nullptr;
            }
            if (head.kind == CborItem::Kind::null) {
                continue;
            }
            qxArrayOwner element = readArray(head, depth + 1);
            if (!element) {
                return nullptr;
            }
            storageOf(array.get()).slots()[slot] = element.release();
        }
        return array;
    }

    CborReader reader_;
    std::size_t slotsLeft_;
};

}  // namespace

}  // namespace qx

qxArray* qxDeserialize(const void* bytes, std::size_t count) try {
    if (bytes == nullptr) {
        return nullptr;
    }
    return qx::handOut(qx::Deserialiser(static_cast<const unsigned char*>(bytes), count).run());
} catch (const std::bad_alloc&) {
    return nullptr;
}
