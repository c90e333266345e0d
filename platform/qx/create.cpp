#include "classtable.h"
#include "fieldnames.h"
#include "storage.h"
#include "text/unicode.h"

#include <cstring>
#include <new>
#include <string>

namespace qx {

namespace {

/// Null when the product overflows, too.
void* newBlock(std::size_t count, std::size_t size, qxContents contents) {
    return contents == qxContents::zeros ? qxCalloc(count, size) : qxMalloc(count * size);
}

}  // namespace

qxArrayOwner makeNumeric(Shape shape, qxClassID classId, bool complex, qxContents contents) {
    const auto count = denseElementCount(shape);
    const bool isUnknownEmpty = classId == qxUNKNOWN_CLASS && count == std::size_t{0};
    if (!count || (!hasNumericStorage(classId) && !isUnknownEmpty)) {
        return nullptr;
    }
    const bool hasImag = complex && canBeComplex(classId);
    qxArrayOwner array = newArray(classId, hasImag ? qxCOMPLEX_FLAG : 0, shape);
    if (!array) {
        return nullptr;
    }
    ArrayStorage& storage = storageOf(array.get());
    const std::size_t elementSize = classInfo(classId).elementSize;
    storage.real = newBlock(*count, elementSize, contents);
    storage.imag = hasImag ? newBlock(*count, elementSize, contents) : nullptr;
    const bool isWhole = storage.real != nullptr && (storage.imag != nullptr) == hasImag;
    return isWhole ? std::move(array) : nullptr;
}

bool makeSlotTable(ArrayStorage& storage, std::size_t slotCount) noexcept {
    storage.real = qxCalloc(slotCount, sizeof(qxArray*));
    storage.slotCount = storage.real == nullptr ? 0 : slotCount;
    return storage.real != nullptr;
}

qxArrayOwner makeSlotted(Shape shape, qxClassID classId, std::size_t slotCount) {
    qxArrayOwner array = newArray(classId, 0, shape);
    if (!array) {
        return nullptr;
    }
    const bool hasNoFields = slotCount == 0 && extentProduct(shape, 0) != 0;
    return hasNoFields || makeSlotTable(storageOf(array.get()), slotCount) ? std::move(array) : nullptr;
}

namespace {

qxArrayOwner makeCell(Shape shape) {
    const auto count = denseElementCount(shape);
    return count ? makeSlotted(shape, qxCELL_CLASS, *count) : nullptr;
}

qxArrayOwner makeStruct(Shape shape, std::uint32_t fieldCount, const char** fieldNames) try {
    const auto count = denseElementCount(shape);
    auto names = std::make_unique<std::vector<std::string>>();
    for (std::uint32_t field = 0; field < fieldCount; ++field) {
        if (fieldNames == nullptr || !isFieldName(fieldNames[field])) {
            return nullptr;
        }
        names->emplace_back(fieldNames[field]);
    }
    if (!count || !areDistinct(*names)) {
        return nullptr;
    }
    qxArrayOwner array = makeSlotted(shape, qxSTRUCT_CLASS, *count * fieldCount);
    if (array) {
        storageOf(array.get()).fields = std::move(names);
    }
    return array;
} catch (const std::bad_alloc&) {
    return nullptr;
}

template <typename Value>
qxArray* makeScalar(qxClassID classId, Value value) {
    qxArrayOwner array = makeNumeric(GivenShape(1, 1).shape(), classId, false, qxContents::unset);
    if (array) {
        *static_cast<Value*>(array->realData()) = value;
    }
    return handOut(std::move(array));
}

}  // namespace

}  // namespace qx

qxArray* qxCreateNumericArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions, qxClassID classId,
                              qxComplexity complexity) {
    const qx::GivenShape given(dimensionCount, dimensions);
    return qx::handOut(qx::makeNumeric(given.shape(), classId, complexity == qxCOMPLEX, qxContents::zeros));
}

qxArray* qxCreateUninitNumericArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions, qxClassID classId,
                                    qxComplexity complexity) {
    const qx::GivenShape given(dimensionCount, dimensions);
    return qx::handOut(qx::makeNumeric(given.shape(), classId, complexity == qxCOMPLEX, qxContents::unset));
}

qxArray* qxCreateNumericMatrix(std::uint32_t rows, std::uint32_t columns, qxClassID classId, qxComplexity complexity) {
    const qx::GivenShape given(rows, columns);
    return qx::handOut(qx::makeNumeric(given.shape(), classId, complexity == qxCOMPLEX, qxContents::zeros));
}

qxArray* qxCreateDoubleMatrix(std::uint32_t rows, std::uint32_t columns, qxComplexity complexity) {
    return qxCreateNumericMatrix(rows, columns, qxDOUBLE_CLASS, complexity);
}

qxArray* qxCreateDoubleScalar(double value) { return qx::makeScalar(qxDOUBLE_CLASS, value); }

qxArray* qxCreateLogicalScalar(bool value) { return qx::makeScalar(qxLOGICAL_CLASS, static_cast<std::uint8_t>(value)); }

qxArray* qxCreateString(const char* text) try {
    if (text == nullptr) {
        return nullptr;
    }
    const std::u16string units = text::utf16FromUtf8(text);
    return qxCreateStringUtf16(units.data(), units.size());
} catch (const std::bad_alloc&) {
    return nullptr;
}

qxArray* qxCreateStringUtf16(const char16_t* units, std::size_t count) {
    if (count > qx::kMaxExtent || (units == nullptr && count != 0)) {
        return nullptr;
    }
    const qx::GivenShape given(count == 0 ? 0 : 1, static_cast<std::uint32_t>(count));
    qxArrayOwner array = qx::makeNumeric(given.shape(), qxCHAR_CLASS, false, qxContents::unset);
    if (array && count != 0) {
        std::memcpy(array->realData(), units, count * sizeof(char16_t));
    }
    return qx::handOut(std::move(array));
}

qxArray* qxCreateCellArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions) {
    return qx::handOut(qx::makeCell(qx::GivenShape(dimensionCount, dimensions).shape()));
}

qxArray* qxCreateCellMatrix(std::uint32_t rows, std::uint32_t columns) {
    return qx::handOut(qx::makeCell(qx::GivenShape(rows, columns).shape()));
}

qxArray* qxCreateStructArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions, std::uint32_t fieldCount,
                             const char** fieldNames) {
    const qx::GivenShape given(dimensionCount, dimensions);
    return qx::handOut(qx::makeStruct(given.shape(), fieldCount, fieldNames));
}

qxArray* qxCreateStructMatrix(std::uint32_t rows, std::uint32_t columns, std::uint32_t fieldCount,
                              const char** fieldNames) {
    const qx::GivenShape given(rows, columns);
    return qx::handOut(qx::makeStruct(given.shape(), fieldCount, fieldNames));
}
