#include "storage.h"

#include <new>
#include <string_view>

qxArray* qxCreateFunctionHandle(const char* name) {
    const qx::GivenShape scalar(1, 1);
    qxArrayOwner text(qxCreateString(name));
    qxArrayOwner handle = qx::makeSlotted(scalar.shape(), qxFUNCTION_CLASS, 1);
    if (!text || !handle) {
        return nullptr;
    }
    qxSetCell(handle.get(), 0, text.release());
    return qx::handOut(std::move(handle));
}

std::string qxGetFunctionName(const qxArray* array) {
    const bool isHandle = array != nullptr && array->classWord() == qxFUNCTION_CLASS;
    const qxArray* name = isHandle ? qxGetCell(array, 0) : nullptr;
    return name == nullptr ? std::string() : qxGetString(name);
}

qxArray* qxCreateOpaque(const char* subclass, void* payload, void (*destroy)(void*)) try {
    if (subclass == nullptr) {
        return nullptr;
    }
    auto value = std::make_unique<qx::OpaqueValue>();
    value->subclass = subclass;
    value->payload = payload;
    value->destroy = destroy;
    const qx::GivenShape scalar(1, 1);
    qxArrayOwner array = qx::newArray(qxOPAQUE_CLASS, 0, scalar.shape());
    if (array) {
        qx::storageOf(array.get()).opaque = std::move(value);
    }
    return qx::handOut(std::move(array));
} catch (const std::bad_alloc&) {
    return nullptr;
}

const char* qxGetSubclass(const qxArray* array) {
    const auto* opaque = array == nullptr ? nullptr : qx::storageOf(array).opaque.get();
    return opaque == nullptr ? nullptr : opaque->subclass.c_str();
}

void* qxGetOpaquePayload(const qxArray* array) {
    const auto* opaque = array == nullptr ? nullptr : qx::storageOf(array).opaque.get();
    return opaque == nullptr ? nullptr : opaque->payload;
}
