#include "canonicalnan.h"
#include "cborwriter.h"
#include "fieldnames.h"
#include "serialform.h"
#include "sparse.h"
#include "storage.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_map>

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

/// Runs over an array twice, with a writer that counts and with one that writes, without recursion: stacks are small.
/// Functions return false for what can't be written: an opaque value, a broken sparse matrix, too deep a nesting, a
/// form that would not fit the row of bytes that it becomes. Throws std::bad_alloc.
class Serialiser {
public:
    explicit Serialiser(CborWriter writer) noexcept : writer_(writer) {}

    bool writeForm(const qxArray* array) {
        writer_.writeArrayStart(2);
        writer_.writeUnsigned(kSerialVersion);
        return writeArray(array) && writeOpenSlots() && size() <= kMaxExtent;
    }

    std::size_t size() const noexcept { return writer_.size(); }

private:
    /// A cell or struct array whose slots are written one after the other.
    struct OpenSlots {
        const ArrayStorage* storage;
        std::size_t next;
        std::size_t begin;  // size of the form before the list of slots
    };

    /// Writes an array up to its slots; those of a cell or struct array are on the list of open ones then.
    bool writeArray(const qxArray* array) {
        const qxClassID classId = qxGetClassID(array);
        if (classId == qxOPAQUE_CLASS || classId == qxOBJECT_CLASS || open_.size() >= kMaxSerialDepth ||
            size() > kMaxExtent) {
            return false;
        }
        writeHead(array);
        return writeContents(array);
    }

    void writeHead(const qxArray* array) {
        writer_.writeArrayStart(itemsOf(array));
        writer_.writeUnsigned(static_cast<std::uint64_t>(qxGetClassID(array)));
        writeShape(shapeOf(array));
    }

    /// Writes the slots of all open arrays, the innermost one first.
    bool writeOpenSlots() {
        while (!open_.empty()) {
            OpenSlots& innermost = open_.back();
            if (innermost.next == innermost.storage->slotCount) {
                closeSlots(innermost);
                open_.pop_back();
                continue;
            }
            const qxArray* element = innermost.storage->slots()[innermost.next++];
            if (element == nullptr) {
                writer_.writeNull();
            } else if (!writeArray(element)) {
                return false;
            }
        }
        return true;
    }

    void writeShape(Shape shape) {
        writer_.writeArrayStart(shape.count);
        for (std::uint32_t dimension = 0; dimension < shape.count; ++dimension) {
            writer_.writeUnsigned(shape.extents[dimension]);
        }
    }

    bool writeContents(const qxArray* array) {
        const ArrayStorage& storage = storageOf(array);
        switch (qxGetClassID(array)) {
            case qxUNKNOWN_CLASS:
                return true;
            case qxSTRUCT_CLASS:
                writeFieldNames(*storage.fields);
                openSlots(storage);
                return true;
            case qxFUNCTION_CLASS:
                return writeFunctionName(qxGetCell(array, 0));
            case qxCELL_CLASS:
                openSlots(storage);
                return true;
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

    bool writeFunctionName(const qxArray* name) {
        if (!isFunctionName(name)) {
            return false;
        }
        writer_.writeArrayStart(1);
        writeHead(name);
        return writeParts(name, qxGetNumberOfElements(name));
    }

    /// Elements that several arrays share are counted once only: arrays that hold one another twice over and over would
    /// take longer to count than anyone waits, to end as too large.
    void openSlots(const ArrayStorage& storage) {
        const auto known = sharedSizes_.find(&storage);
        if (known != sharedSizes_.end()) {
            writer_.skip(known->second);
            return;
        }
        open_.push_back({&storage, 0, size()});
        writer_.writeArrayStart(storage.slotCount);
    }

    void closeSlots(const OpenSlots& slots) {
        const bool isShared = slots.storage->headers.load(std::memory_order_relaxed) > 1;
        if (isShared && !writer_.writes()) {
            sharedSizes_[slots.storage] = size() - slots.begin;
        }
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

    /// `count` elements of one part.
    bool writePart(qxClassID classId, const void* part, std::size_t count) {
        if (part == nullptr && count != 0) {
            return false;
        }
        writer_.writeTag(classInfo(classId).typedArrayTag);
        if (unsigned char* target = writer_.beginBytes(count * classInfo(classId).elementSize)) {
            copyCanonical(target, classId, part, count);
        }
        return true;
    }

    /// Copies elements so that equal ones have equal bytes: a true logical is 1, whatever byte stands for it in memory,
    /// and there is one NaN.
    static void copyCanonical(unsigned char* target, qxClassID classId, const void* part, std::size_t count) {
        switch (classId) {
            case qxLOGICAL_CLASS: {
                const auto* elements = static_cast<const unsigned char*>(part);
                std::transform(elements, elements + count, target,
                               [](unsigned char element) -> unsigned char { return element != 0 ? 1 : 0; });
                return;
            }
            case qxDOUBLE_CLASS:
                copyWithCanonicalNaN(target, static_cast<const double*>(part), count);
                return;
            case qxSINGLE_CLASS:
                copyWithCanonicalNaN(target, static_cast<const float*>(part), count);
                return;
            default:
                if (count != 0) {
                    std::memcpy(target, part, count * classInfo(classId).elementSize);
                }
        }
    }

    CborWriter writer_;
    std::vector<OpenSlots> open_;                                       // the outermost array first
    std::unordered_map<const ArrayStorage*, std::size_t> sharedSizes_;  // of the slots
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
    qxArrayOwner form = qx::makeNumeric(row.shape(), qxUINT8_CLASS, false, qxContents::unset);
    if (!form) {
        return nullptr;
    }
    qx::Serialiser writing{qx::CborWriter(static_cast<unsigned char*>(form->realData()), size)};
    const bool isWhole = writing.writeForm(array) && writing.size() == size;
    return isWhole ? qx::handOut(std::move(form)) : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}
