#include <algorithm>
#include <new>
#include <unordered_map>

#include "cborwriter.h"
#include "fieldnames.h"
#include "serialform.h"
#include "sparse.h"
#include "storage.h"

namespace qx {

bool isFunctionName(const qxArray* name) {
    if (name == nullptr || name->classWord() != qxCHAR_CLASS || name->numberOfDimensions() != 2) {
        return false;
    }
    const std::uint32_t* extents = name->get_dimensions();
    return (extents[0] == 1 && extents[1] != 0) || (extents[0] == 0 && extents[1] == 0);
}

namespace {

std::uint64_t itemsOf(const qxArray* array) {
    const qxClassID classId = qxGetClassID(array);
    if (classId == qxUNKNOWN_CLASS) {
        return kUnknownItems;
    }
    if (classId == qxSTRUCT_CLASS) {
        return kStructItems;
    }
    if (!hasNumericStorage(classId)) {
        return kCellItems;
    }
    return (array->isSparse() ? kSparseItems : kDenseItems) + (qxIsComplex(array) ? 1 : 0);
}

/// Runs over an array twice, with a writer that counts and with one that writes. Functions return false for what can't
/// be written: an opaque value, a broken sparse matrix, too deep a nesting, a form that would not fit the row of bytes
/// that it becomes. Throws std::bad_alloc.
class Serialiser {
public:
    explicit Serialiser(CborWriter writer) noexcept : writer_(writer) {}

    bool writeForm(const qxArray* array) {
        writer_.writeArrayStart(2);
        writer_.writeUnsigned(kSerialVersion);
        return writeArray(array, 1) && size() <= kMaxExtent;
    }

    std::size_t size() const noexcept { return writer_.size(); }

private:
    bool writeArray(const qxArray* array, int depth) {
        const qxClassID classId = qxGetClassID(array);
        if (classId == qxOPAQUE_CLASS || classId == qxOBJECT_CLASS || depth > kMaxSerialDepth || size() > kMaxExtent) {
            return false;
        }
        writer_.writeArrayStart(itemsOf(array));
        writer_.writeUnsigned(static_cast<std::uint64_t>(classId));
        writeShape(shapeOf(array));
        return writeContents(array, depth);
    }

    void writeShape(Shape shape) {
        writer_.writeArrayStart(shape.count);
        for (std::uint32_t dimension = 0; dimension < shape.count; ++dimension) {
            writer_.writeUnsigned(shape.extents[dimension]);
        }
    }

    bool writeContents(const qxArray* array, int depth) {
        const ArrayStorage& storage = storageOf(array);
        switch (qxGetClassID(array)) {
            case qxUNKNOWN_CLASS:
                return true;
            case qxSTRUCT_CLASS:
                writeFieldNames(*storage.fields);
                return writeSlots(storage, depth);
            case qxFUNCTION_CLASS:
                return isFunctionName(qxGetCell(array, 0)) && writeSlots(storage, depth);
            case qxCELL_CLASS:
                return writeSlots(storage, depth);
            default:
                return array->isSparse() ? writeSparse(array) : writeParts(array, qxGetNumberOfElements(array));
        }
    }

    void writeFieldNames(const std::vector<std::string>& names) {
        writer_.writeArrayStart(names.size());
        for (const std::string& name : names) {
            const WrittenName written = writtenName(name);
            if (written.isText) {
                writer_.writeText(written.bytes);
            } else {
                writer_.writeBytes(written.bytes.data(), written.bytes.size());
            }
        }
    }

    bool writeSlots(const ArrayStorage& storage, int depth) {
        if (storage.headers.load(std::memory_order_relaxed) > 1 && !writer_.writes()) {
            return countSharedSlots(storage, depth);
        }
        return writeEachSlot(storage, depth);
    }

    bool writeEachSlot(const ArrayStorage& storage, int depth) {
        writer_.writeArrayStart(storage.slotCount);
        for (std::size_t slot = 0; slot < storage.slotCount; ++slot) {
            const qxArray* element = storage.slots()[slot];
            if (element == nullptr) {
                writer_.writeNull();
            } else if (!writeArray(element, depth + 1)) {
                return false;
            }
        }
        return true;
    }

    /// Counts elements that several arrays share once only: arrays that hold one another twice over and over would take
    /// longer to count than anyone waits, to end as too large.
    bool countSharedSlots(const ArrayStorage& storage, int depth) {
        const auto known = sharedSizes_.find(&storage);
        if (known != sharedSizes_.end()) {
            writer_.skip(known->second);
            return size() <= kMaxExtent;
        }
        const std::size_t before = size();
        const bool isWhole = writeEachSlot(storage, depth);
        sharedSizes_[&storage] = size() - before;
        return isWhole;
    }

    bool writeSparse(const qxArray* array) {
        if (!hasValidTables(array)) {
            return false;
        }
        const std::size_t stored = storedCount(array);
        writer_.writeTag(kIndexTag);
        writer_.writeBytes(array->columnStartTable(), (qxGetN(array) + 1) * sizeof(std::uint32_t));
        writer_.writeTag(kIndexTag);
        writer_.writeBytes(array->rowIndexTable(), stored * sizeof(std::uint32_t));
        return writeParts(array, stored);
    }

    bool writeParts(const qxArray* array, std::size_t count) {
        const qxClassID classId = qxGetClassID(array);
        return writePart(classId, array->realData(), count) &&
               (!qxIsComplex(array) || writePart(classId, array->imagData(), count));
    }

    /// `count` elements of one part. A logical element is written as 0 or 1, whatever byte stands for true in memory.
    bool writePart(qxClassID classId, const void* part, std::size_t count) {
        if (part == nullptr && count != 0) {
            return false;
        }
        writer_.writeTag(classInfo(classId).typedArrayTag);
        if (classId != qxLOGICAL_CLASS) {
            writer_.writeBytes(part, count * classInfo(classId).elementSize);
            return true;
        }
        const auto* elements = static_cast<const unsigned char*>(part);
        if (unsigned char* target = writer_.beginBytes(count)) {
            std::transform(elements, elements + count, target,
                           [](unsigned char element) -> unsigned char { return element != 0 ? 1 : 0; });
        }
        return true;
    }

    CborWriter writer_;
    std::unordered_map<const ArrayStorage*, std::size_t> sharedSizes_;
};

}  // namespace

}  // namespace qx

qxArray* qxSerialize(const qxArray* array) try {
    qx::Serialiser counting{qx::CborWriter()};
    if (array == nullptr || !counting.writeForm(array)) {
        return nullptr;
    }
    const std::size_t size = counting.size();
    const qx::GivenShape row(1, static_cast<std::uint32_t>(size));
    qxArrayOwner form = qx::makeNumeric(row.shape(), qxUINT8_CLASS, false, qx::Fill::unset);
    if (!form) {
        return nullptr;
    }
    qx::Serialiser writing{qx::CborWriter(static_cast<unsigned char*>(form->realData()), size)};
    const bool isWhole = writing.writeForm(array) && writing.size() == size;
    return isWhole ? qx::handOut(std::move(form)) : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}
