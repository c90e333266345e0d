#include "storage.h"

#include <new>
#include <unordered_set>

namespace qx {

namespace {

/// Whether `target` is the storage of `array` or of anything nested in it.
bool reaches(const qxArray* array, const ArrayStorage* target) {
    std::vector<const ArrayStorage*> pending = {&storageOf(array)};
    std::unordered_set<const ArrayStorage*> seen;
    while (!pending.empty()) {
        const ArrayStorage* storage = pending.back();
        pending.pop_back();
        if (storage == target) {
            return true;
        }
        const bool seenBefore = storage->headers > 1 && !seen.insert(storage).second;
        for (std::size_t slot = 0; !seenBefore && slot < storage->slotCount; ++slot) {
            const qxArray* element = storage->slots()[slot];
            if (element != nullptr && (storageOf(element).slotCount != 0)) {
                pending.push_back(&storageOf(element));
            }
        }
    }
    return false;
}

/// The value as it can be stored: a copy where it holds the very storage that it goes into, which would otherwise own
/// itself. Only a storage with another header over it can be met there. Null when memory runs out.
qxArrayOwner withoutCycle(const ArrayStorage& target, qxArrayOwner value) try {
    const bool isCycle = value && target.headers > 1 && reaches(value.get(), &target);
    return isCycle ? duplicate(value.get()) : std::move(value);
} catch (const std::bad_alloc&) {
    return nullptr;
}

void put(ArrayStorage& storage, std::size_t index, qxArrayOwner value) {
    if (value) {
        qxArrayAccess::leaveScope(value.get());
    }
    storage.slots()[index] = value.release();
}

}  // namespace

}  // namespace qx

qxArray* qxGetCell(const qxArray* array, std::size_t index) {
    const qx::ArrayStorage& storage = qx::storageOf(array);
    return index < storage.slotCount ? storage.slots()[index] : nullptr;
}

void qxSetCell(qxArray* array, std::size_t index, qxArray* value) {
    qxArrayOwner owned(value);
    qx::ArrayStorage& storage = qx::storageOf(array);
    if (index >= storage.slotCount) {
        return;
    }
    // The old element may be gone already, so the slot is emptied before anything looks into the array.
    storage.slots()[index] = nullptr;
    qx::put(storage, index, qx::withoutCycle(storage, std::move(owned)));
}

bool qxReplaceCell(qxArray* array, std::size_t index, qxArray* value, qxArray** replaced) {
    *replaced = nullptr;
    qx::ArrayStorage& storage = qx::storageOf(array);
    qxArrayOwner stored = qx::withoutCycle(storage, qxArrayOwner(value));
    if (value != nullptr && !stored) {
        return false;
    }
    if (index < storage.slotCount) {
        *replaced = storage.slots()[index];
        qx::put(storage, index, std::move(stored));
    }
    return true;
}
