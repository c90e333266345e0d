#include "classtable.h"
#include "sparse.h"
#include "storage.h"

#include <cstring>
#include <new>
#include <unordered_map>

namespace qx {

namespace {

/// New header over the storage of `over` with the class, flags and shape of `like`.
qxArrayOwner headerOver(const qxArray* over, const qxArray* like) noexcept {
    ArrayStorage& storage = storageOf(over);
    qxArrayOwner header(qxArrayAccess::newHeader(like->classWord(), like->flags(), shapeOf(like), &storage));
    if (header) {
        storage.headers.fetch_add(1, std::memory_order_relaxed);
    }
    return header;
}

/// Copies the first `used` of `room` bytes into a block of its own; a block that is not there stays away.
template <typename Block>
bool copyBlock(Block*& target, const Block* source, std::size_t used, std::size_t room) {
    if (source == nullptr) {
        return true;
    }
    target = static_cast<Block*>(qxMalloc(room));
    if (target == nullptr) {
        return false;
    }
    std::memcpy(target, source, used);
    return true;
}

bool copyParts(ArrayStorage& to, const ArrayStorage& from, std::size_t used, std::size_t room) {
    return copyBlock(to.real, from.real, used, room) && copyBlock(to.imag, from.imag, used, room);
}

bool copySparse(ArrayStorage& to, const qxArray* source) {
    const ArrayStorage& from = storageOf(source);
    const std::size_t columns = source->get_dimensions()[1];
    const std::size_t stored = std::min(storedCount(source), from.capacity);
    const std::size_t elementSize = qxGetElementSize(source);
    constexpr std::size_t entry = sizeof(std::uint32_t);
    to.capacity = from.capacity;
    return copyBlock(to.columnStart, from.columnStart, (columns + 1) * entry, (columns + 1) * entry) &&
           copyBlock(to.rowIndex, from.rowIndex, stored * entry, from.capacity * entry) &&
           copyParts(to, from, stored * elementSize, from.capacity * elementSize);
}

bool copySlotTable(ArrayStorage& to, const ArrayStorage& from) {
    if (from.fields) {
        to.fields = std::make_unique<std::vector<std::string>>(*from.fields);
    }
    return from.real == nullptr || makeSlotTable(to, from.slotCount);
}

bool copyContents(ArrayStorage& to, const qxArray* source) {
    const qxClassID classId = qxGetClassID(source);
    if (source->isSparse()) {
        return copySparse(to, source);
    }
    if (classId == qxUNKNOWN_CLASS || hasNumericStorage(classId)) {
        const std::size_t bytes = qxGetNumberOfElements(source) * qxGetElementSize(source);
        return copyParts(to, storageOf(source), bytes, bytes);
    }
    return copySlotTable(to, storageOf(source));
}

/// Copy of one array whose element table, if any, holds nulls yet. Throws std::bad_alloc.
qxArrayOwner copyWithoutElements(const qxArray* source) {
    if (storageOf(source).opaque) {
        return headerOver(source, source);
    }
    qxArrayOwner copy = newArray(qxGetClassID(source), source->flags(), shapeOf(source));
    if (copy && !copyContents(storageOf(copy.get()), source)) {
        copy = nullptr;
    }
    if (!copy) {
        throw std::bad_alloc();
    }
    return copy;
}

/// Copies what nests, by a list and not by recursion. Arrays that share a storage share it in the copy too, so that a
/// copy never takes more than its source.
class DeepCopy {
public:
    qxArrayOwner run(const qxArray* source) {
        qxArrayOwner root = copyOf(source);
        while (!pending_.empty()) {
            const Pair next = pending_.back();
            pending_.pop_back();
            copyElements(next);
        }
        return root;
    }

private:
    struct Pair {
        const ArrayStorage* source;
        ArrayStorage* copy;
    };

    void copyElements(const Pair& pair) {
        for (std::size_t slot = 0; slot < pair.source->slotCount; ++slot) {
            const qxArray* element = pair.source->slots()[slot];
            if (element != nullptr) {
                pair.copy->slots()[slot] = copyOf(element).release();
            }
        }
    }

    qxArrayOwner copyOf(const qxArray* source) {
        const ArrayStorage& storage = storageOf(source);
        const auto known = copies_.find(&storage);
        if (known != copies_.end()) {
            qxArrayOwner header = headerOver(known->second, source);
            return header ? std::move(header) : throw std::bad_alloc();
        }
        qxArrayOwner copy = copyWithoutElements(source);
        if (storage.headers.load(std::memory_order_relaxed) > 1) {
            copies_.emplace(&storage, copy.get());
        }
        if (storage.slotCount != 0) {
            pending_.push_back({&storage, &storageOf(copy.get())});
        }
        return copy;
    }

    std::vector<Pair> pending_;
    std::unordered_map<const ArrayStorage*, const qxArray*> copies_;  // of storages with several headers
};

}  // namespace

qxArrayOwner duplicate(const qxArray* source) try { return DeepCopy().run(source); } catch (const std::bad_alloc&) {
    return nullptr;
}

}  // namespace qx

qxArray* qxCreateSharedDataCopy(const qxArray* source) {
    return source == nullptr ? nullptr : qx::handOut(qx::headerOver(source, source));
}

qxArray* qxDuplicateArray(const qxArray* source) {
    return source == nullptr ? nullptr : qx::handOut(qx::duplicate(source));
}
