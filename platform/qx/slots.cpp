#include <algorithm>
#include <new>
#include <unordered_set>

#include "fieldnames.h"
#include "storage.h"

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
    qxArrayOwner stored = qx::withoutCycle(storage, std::move(owned));
    if (stored) {
        qxArrayAccess::leaveScope(stored.get());
    }
    storage.slots()[index] = stored.release();
}

qxArray* qxWithoutCycle(const qxArray* array, qxArray* value) {
    return qx::withoutCycle(qx::storageOf(array), qxArrayOwner(value)).release();
}

int qxAddField(qxArray* array, const char* name) try {
    qx::ArrayStorage& storage = qx::storageOf(array);
    if (!storage.fields || !qx::isFieldName(name)) {
        return -1;
    }
    std::vector<std::string>& fields = *storage.fields;
    const int present = qx::findName(fields, name);
    if (present >= 0) {
        return present;
    }
    fields.reserve(fields.size() + 1);
    std::string added = name;
    const std::size_t elements = qxGetNumberOfElements(array);
    const std::size_t before = fields.size();
    auto** widened = static_cast<qxArray**>(qxCalloc(elements, (before + 1) * sizeof(qxArray*)));
    if (widened == nullptr) {
        return -1;
    }
    for (std::size_t element = 0; element < elements; ++element) {
        std::copy_n(storage.slots() + element * before, before, widened + element * (before + 1));
    }
    qxFree(storage.real);
    fields.push_back(std::move(added));
    storage.real = widened;
    storage.slotCount = elements * (before + 1);
    return static_cast<int>(before);
} catch (const std::bad_alloc&) {
    return -1;
}

int qxGetFieldNumber(const qxArray* array, const char* name) try {
    const qx::ArrayStorage& storage = qx::storageOf(array);
    return storage.fields && name != nullptr ? qx::findName(*storage.fields, name) : -1;
} catch (const std::bad_alloc&) {
    return -1;
}

qxArray* qxGetField(const qxArray* array, std::size_t element, const char* name) {
    const int field = qxGetFieldNumber(array, name);
    if (field < 0) {
        return nullptr;
    }
    return qxGetCell(array, element * qx::storageOf(array).fields->size() + static_cast<std::size_t>(field));
}

std::uint32_t qxArray::get_number_of_struct_fields() const noexcept {
    const auto& fields = qx::storageOf(this).fields;
    return fields ? static_cast<std::uint32_t>(fields->size()) : 0;
}

const char* qxArray::get_struct_field_name_by_number(std::uint32_t number) const noexcept {
    return number < get_number_of_struct_fields() ? (*qx::storageOf(this).fields)[number].c_str() : nullptr;
}
