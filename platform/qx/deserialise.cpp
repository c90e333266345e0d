#include "cborreader.h"
#include "fieldnames.h"
#include "serialform.h"
#include "sparse.h"
#include "storage.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qx {

namespace {

/// Builds the array behind a serialised form, without recursion: the form may come from anywhere, and stacks are small.
/// A count is believed only as far as bytes are left to bear it out, so that the memory taken stays within a constant
/// factor of the input. Every function returns null or false for bad bytes.
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
        qxArrayOwner array = reader_.read(head) ? readArray(head) : nullptr;
        const bool isWhole = array && readOpenSlots() && reader_.remaining() == 0;
        return isWhole ? std::move(array) : nullptr;
    }

private:
    /// The extents of one array. They are read on the stack: there is a bound to them.
    struct Extents {
        std::uint32_t values[kMaxDimensions];
        std::uint32_t count = 0;

        Shape shape() const noexcept { return {count, values}; }
        bool areOnes() const noexcept { return count == 2 && values[0] == 1 && values[1] == 1; }
    };

    /// A cell or struct array whose slots are read one after the other.
    struct OpenSlots {
        ArrayStorage* storage;
        std::size_t next;
    };

    /// `head` is the item that has been read already: the start of the array's list. The slots of a cell or struct
    /// array stay unread; it is on the list of open ones then.
    qxArrayOwner readArray(const CborItem& head) {
        std::uint64_t classId = 0;
        Extents extents;
        if (head.kind != CborKind::array || !reader_.readUnsigned(classId) || !readExtents(extents)) {
            return nullptr;
        }
        if (hasNumericStorage(classId)) {
            return readNumeric(static_cast<qxClassID>(classId), extents, head.value);
        }
        switch (classId) {
            case qxUNKNOWN_CLASS:
                return head.value == kUnknownItems
                           ? makeNumeric(extents.shape(), qxUNKNOWN_CLASS, false, qxContents::zeros)
                           : nullptr;
            case qxCELL_CLASS:
                return head.value == kCellItems ? readCell(extents) : nullptr;
            case qxSTRUCT_CLASS:
                return head.value == kStructItems ? readStruct(extents) : nullptr;
            case qxFUNCTION_CLASS:
                return head.value == kCellItems ? readFunctionHandle(extents) : nullptr;
            default:
                return nullptr;
        }
    }

    /// Reads the slots of all open arrays, the innermost one first.
    bool readOpenSlots() {
        while (!open_.empty()) {
            OpenSlots& innermost = open_.back();
            if (innermost.next == innermost.storage->slotCount) {
                open_.pop_back();
                continue;
            }
            qxArray*& slot = innermost.storage->slots()[innermost.next++];
            CborItem head;
            if (!reader_.read(head)) {
                return false;
            }
            if (!head.isNull()) {
                slot = open_.size() < kMaxSerialDepth ? readArray(head).release() : nullptr;
                if (slot == nullptr) {
                    return false;
                }
            }
        }
        return true;
    }

    bool readExtents(Extents& extents) {
        std::uint64_t count = 0;
        if (!reader_.readArrayStart(count) || count < 2 || count > kMaxDimensions) {
            return false;
        }
        while (extents.count < count) {
            std::uint64_t extent = 0;
            if (!reader_.readUnsigned(extent) || extent > kMaxExtent) {
                return false;
            }
            extents.values[extents.count++] = static_cast<std::uint32_t>(extent);
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
        return isSparse && isSparseClass(classId) && extents.count == 2 ? readSparse(classId, extents, complex)
                                                                        : nullptr;
    }

    qxArrayOwner readDense(qxClassID classId, const Extents& extents, bool complex) {
        const Shape shape = extents.shape();
        const auto count = denseElementCount(shape);
        std::string_view real;
        std::string_view imag;
        if (!count || !readPart(classId, *count, real) || (complex && !readPart(classId, *count, imag))) {
            return nullptr;
        }
        qxArrayOwner array = makeNumeric(shape, classId, complex, qxContents::unset);
        if (array) {
            fillParts(array.get(), real, imag);
        }
        return array;
    }

    qxArrayOwner readSparse(qxClassID classId, const Extents& extents, bool complex) {
        constexpr std::size_t entry = sizeof(std::uint32_t);
        std::string_view starts;
        std::string_view rows;
        if (!reader_.readTagged(kIndexTag, starts) || starts.size() != (std::size_t{extents.values[1]} + 1) * entry ||
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
        qxArrayOwner array =
            makeSparse(extents.values[0], extents.values[1], static_cast<std::uint32_t>(stored), classId, complex);
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

    qxArrayOwner readCell(const Extents& extents) {
        const auto count = denseElementCount(extents.shape());
        return count ? openSlots(extents, qxCELL_CLASS, *count) : nullptr;
    }

    qxArrayOwner readStruct(const Extents& extents) {
        const auto count = denseElementCount(extents.shape());
        auto names = std::make_unique<std::vector<std::string>>();
        if (!count || !readFieldNames(*names)) {
            return nullptr;
        }
        std::size_t slotCount = 0;
        if (__builtin_mul_overflow(*count, names->size(), &slotCount)) {
            return nullptr;
        }
        qxArrayOwner array = openSlots(extents, qxSTRUCT_CLASS, slotCount);
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
            if (!reader_.read(item) || (item.kind != CborKind::text && item.kind != CborKind::bytes)) {
                return false;
            }
            std::string name(reinterpret_cast<const char*>(item.data), static_cast<std::size_t>(item.value));
            const WrittenName given = {std::move(name), item.kind == CborKind::text};
            if (given.bytes.empty() || !(given == writtenName(given.bytes))) {
                return false;
            }
            names.push_back(given.bytes);
        }
        return areDistinct(names);
    }

    qxArrayOwner readFunctionHandle(const Extents& extents) {
        CborItem head;
        std::uint64_t items = 0;
        std::uint64_t classId = 0;
        Extents nameExtents;
        if (!extents.areOnes() || !reader_.readArrayStart(items) || items != 1 || !reader_.read(head) ||
            head.kind != CborKind::array || !reader_.readUnsigned(classId) || classId != qxCHAR_CLASS ||
            !readExtents(nameExtents)) {
            return nullptr;
        }
        qxArrayOwner name = readNumeric(qxCHAR_CLASS, nameExtents, head.value);
        qxArrayOwner handle = makeSlotted(extents.shape(), qxFUNCTION_CLASS, 1);
        if (!handle || !isFunctionName(name.get())) {
            return nullptr;
        }
        storageOf(handle.get()).slots()[0] = name.release();
        return handle;
    }

    /// Every slot of every array takes a byte of its own, which bounds all element tables together.
    qxArrayOwner openSlots(const Extents& extents, qxClassID classId, std::size_t slotCount) {
        std::uint64_t items = 0;
        if (!reader_.readArrayStart(items) || items != slotCount || slotCount > slotsLeft_) {
            return nullptr;
        }
        slotsLeft_ -= slotCount;
        qxArrayOwner array = makeSlotted(extents.shape(), classId, slotCount);
        if (array) {
            open_.push_back({&storageOf(array.get()), 0});
        }
        return array;
    }

    CborReader reader_;
    std::size_t slotsLeft_;
    std::vector<OpenSlots> open_;  // the outermost array first
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
