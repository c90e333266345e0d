#include "krt/component.h"
#include "qx/qx.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

/// The first element of a block, by the class of its array.
double firstElement(qxClassID id, const void* block) {
    const auto as = [block](auto example) {
        return static_cast<double>(*static_cast<const decltype(example)*>(block));
    };
    switch (id) {
        case qxLOGICAL_CLASS:
        case qxUINT8_CLASS:
            return as(std::uint8_t{});
        case qxCHAR_CLASS:
            return as(char16_t{});
        case qxDOUBLE_CLASS:
            return as(double{});
        case qxSINGLE_CLASS:
            return as(float{});
        case qxINT8_CLASS:
            return as(std::int8_t{});
        case qxINT16_CLASS:
            return as(std::int16_t{});
        case qxUINT16_CLASS:
            return as(std::uint16_t{});
        case qxINT32_CLASS:
            return as(std::int32_t{});
        case qxUINT32_CLASS:
            return as(std::uint32_t{});
        case qxINT64_CLASS:
            return as(std::int64_t{});
        case qxUINT64_CLASS:
            return as(std::uint64_t{});
        default:
            return std::numeric_limits<double>::quiet_NaN();
    }
}

/// Whether the element in the first row and column of a sparse array is a stored one, and so the first one.
bool storesFirst(const qxArray* array) { return array->columnStartTable()[1] > 0 && array->rowIndexTable()[0] == 0; }

}  // namespace

int krtClassOf(const qxArray* array) { return array == nullptr ? qxUNKNOWN_CLASS : qxGetClassID(array); }

size_t krtRows(const qxArray* array) { return array == nullptr ? 0 : qxGetM(array); }

size_t krtColumns(const qxArray* array) { return array == nullptr ? 0 : qxGetN(array); }

double* krtDoubles(const qxArray* array) {
    const bool isDense = krtClassOf(array) == qxDOUBLE_CLASS && !qxIsSparse(array);
    return isDense ? static_cast<double*>(array->realData()) : nullptr;
}

double krtScalar(const qxArray* array) {
    if (array == nullptr || qxIsEmpty(array)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (qxIsSparse(array) && !storesFirst(array)) {
        return 0.0;
    }
    return firstElement(qxGetClassID(array), array->realData());
}

char* krtText(const qxArray* array) try {
    return krtClassOf(array) == qxCHAR_CLASS ? strdup(qxGetString(array).c_str()) : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

void krtFreeText(char* text) { std::free(text); }

qxArray* krtMakeDoubleMatrix(size_t rows, size_t columns) {
    constexpr size_t longest = std::numeric_limits<std::int32_t>::max();
    if (rows > longest || columns > longest) {
        return nullptr;
    }
    return qxCreateDoubleMatrix(static_cast<std::uint32_t>(rows), static_cast<std::uint32_t>(columns), qxREAL);
}

qxArray* krtMakeScalar(double value) { return qxCreateDoubleScalar(value); }

qxArray* krtMakeText(const char* text) { return qxCreateString(text == nullptr ? "" : text); }

qxArray* krtMakeFunctionHandle(const char* name) { return qxCreateFunctionHandle(name == nullptr ? "" : name); }
