#include "randomarray.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::uint32_t below(Random& random, std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); }

std::vector<std::uint32_t> randomExtents(Random& random) {
    std::vector<std::uint32_t> extents(2 + below(random, 4));
    std::generate(extents.begin(), extents.end(), [&] { return below(random, 12) == 0 ? 0 : 1 + below(random, 4); });
    return extents;
}

double randomNumber(Random& random) {
    const double special[] = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), 1e-310};
    return below(random, 8) == 0 ? special[below(random, 6)] : std::ldexp(static_cast<double>(random() % 1000), -4);
}

void fillPart(Random& random, qxClassID classId, void* part, std::size_t count, std::size_t elementSize) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t bits = random();
        if (classId == qxDOUBLE_CLASS) {
            const double number = randomNumber(random);
            std::memcpy(&bits, &number, sizeof number);
        } else if (classId == qxSINGLE_CLASS) {
            const auto number = static_cast<float>(randomNumber(random));
            std::memcpy(&bits, &number, sizeof number);
        } else if (classId == qxLOGICAL_CLASS) {
            bits &= 1U;
        }
        std::memcpy(static_cast<char*>(part) + i * elementSize, &bits, elementSize);
    }
}

void fillParts(Random& random, const qxArrayOwner& array, std::size_t count) {
    const qxClassID classId = qxGetClassID(array.get());
    fillPart(random, classId, array->realData(), count, qxGetElementSize(array.get()));
    if (array->imagData() != nullptr) {
        fillPart(random, classId, array->imagData(), count, qxGetElementSize(array.get()));
    }
}

qxArrayOwner randomNested(Random& random, int depth, bool isStruct) {
    const std::vector<std::uint32_t> extents = randomExtents(random);
    const auto count = static_cast<std::uint32_t>(extents.size());
    const char* names[] = {"a", "beta", "\xC3\xA9t\xC3\xA9", "\xED\xA0\xB5\xED\xB2\x9C"};
    const std::uint32_t fields = below(random, 5);
    qxArrayOwner array(isStruct ? qxCreateStructArray(count, extents.data(), fields, names)
                                : qxCreateCellArray(count, extents.data()));
    const std::size_t slots = qxGetNumberOfElements(array.get()) * (isStruct ? fields : 1);
    for (std::size_t slot = 0; slot < slots && slot < 30; ++slot) {
        if (below(random, 4) != 0) {
            qxSetCell(array.get(), slot, randomArray(random, depth - 1).release());
        }
    }
    return array;
}

bool sameBytes(const void* first, const void* second, std::size_t bytes) {
    return (first == nullptr) == (second == nullptr) &&
           (first == nullptr || bytes == 0 || std::memcmp(first, second, bytes) == 0);
}

bool sameTables(const qxArray* first, const qxArray* second) {
    const std::size_t columns = qxGetN(first);
    const std::uint32_t stored = first->columnStartTable()[columns];
    return sameBytes(first->columnStartTable(), second->columnStartTable(), (columns + 1) * 4) &&
           sameBytes(first->rowIndexTable(), second->rowIndexTable(), std::size_t{stored} * 4);
}

bool sameFields(const qxArray* first, const qxArray* second) {
    const std::uint32_t count = first->get_number_of_struct_fields();
    for (std::uint32_t field = 0; field < count; ++field) {
        const char* name = first->get_struct_field_name_by_number(field);
        if (qxGetFieldNumber(second, name) != static_cast<int>(field)) {
            return false;
        }
    }
    return second->get_number_of_struct_fields() == count;
}

bool sameSlots(const qxArray* first, const qxArray* second, std::size_t slots) {
    for (std::size_t slot = 0; slot < slots; ++slot) {
        const qxArray* one = qxGetCell(first, slot);
        const qxArray* other = qxGetCell(second, slot);
        if ((one == nullptr) != (other == nullptr) || (one != nullptr && !areSame(one, other))) {
            return false;
        }
    }
    return true;
}

}  // namespace

qxArrayOwner randomDense(Random& random) {
    const qxClassID classes[] = {qxLOGICAL_CLASS, qxCHAR_CLASS,   qxDOUBLE_CLASS, qxSINGLE_CLASS,
                                 qxINT8_CLASS,    qxUINT8_CLASS,  qxINT16_CLASS,  qxUINT16_CLASS,
                                 qxINT32_CLASS,   qxUINT32_CLASS, qxINT64_CLASS,  qxUINT64_CLASS};
    const std::vector<std::uint32_t> extents = randomExtents(random);
    qxArrayOwner array(qxCreateNumericArray(static_cast<std::uint32_t>(extents.size()), extents.data(),
                                            classes[below(random, 12)], below(random, 3) == 0 ? qxCOMPLEX : qxREAL));
    fillParts(random, array, qxGetNumberOfElements(array.get()));
    return array;
}

qxArrayOwner randomSparse(Random& random) {
    const std::uint32_t rows = below(random, 6);
    const std::uint32_t columns = below(random, 6);
    std::vector<std::uint32_t> rowIndex;
    std::vector<std::uint32_t> starts = {0};
    for (std::uint32_t column = 0; column < columns; ++column) {
        for (std::uint32_t row = 0; row < rows; ++row) {
            if (below(random, 3) == 0) {
                rowIndex.push_back(row);
            }
        }
        starts.push_back(static_cast<std::uint32_t>(rowIndex.size()));
    }
    const auto capacity = static_cast<std::uint32_t>(rowIndex.size()) + below(random, 3);
    qxArrayOwner array(below(random, 3) == 0
                           ? qxCreateSparseLogicalMatrix(rows, columns, capacity)
                           : qxCreateSparse(rows, columns, capacity, below(random, 3) == 0 ? qxCOMPLEX : qxREAL));
    std::copy(starts.begin(), starts.end(), array->columnStartTable());
    std::copy(rowIndex.begin(), rowIndex.end(), array->rowIndexTable());
    fillParts(random, array, rowIndex.size());
    return array;
}

qxArrayOwner randomArray(Random& random, int depth) {
    const std::uint32_t kind = below(random, depth > 1 ? 8 : 4);
    if (kind == 0) {
        return randomSparse(random);
    }
    if (kind == 1 && below(random, 4) == 0) {
        return qxArrayOwner(qxCreateFunctionHandle("step"));
    }
    return kind < 4 ? randomDense(random) : randomNested(random, depth, kind % 2 == 0);
}

bool areSame(const qxArray* first, const qxArray* second) {
    const bool sameHeader = qxGetClassID(first) == qxGetClassID(second) && first->flags() == second->flags() &&
                            first->numberOfDimensions() == second->numberOfDimensions() &&
                            std::equal(first->get_dimensions(), first->get_dimensions() + first->numberOfDimensions(),
                                       second->get_dimensions());
    if (!sameHeader || !sameFields(first, second)) {
        return false;
    }
    const std::size_t count = qxGetNumberOfElements(first);
    switch (qxGetClassID(first)) {
        case qxCELL_CLASS:
        case qxFUNCTION_CLASS:
            return sameSlots(first, second, count);
        case qxSTRUCT_CLASS:
            return sameSlots(first, second, count * first->get_number_of_struct_fields());
        default:
            break;
    }
    if (first->isSparse() && !sameTables(first, second)) {
        return false;
    }
    const std::size_t stored = first->isSparse() ? first->columnStartTable()[qxGetN(first)] : count;
    const std::size_t bytes = stored * qxGetElementSize(first);
    return sameBytes(first->realData(), second->realData(), bytes) &&
           sameBytes(first->imagData(), second->imagData(), bytes);
}
