#include "fieldnames.h"
#include "storage.h"

#include <algorithm>
#include <new>

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

int qxGetFieldNumber(const qxArray* array, const char* name) {
    const qx::ArrayStorage& storage = qx::storageOf(array);
    return storage.fields && name != nullptr ? qx::findName(*storage.fields, name) : -1;
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
