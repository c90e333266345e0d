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

/// What an array without slots holds: its parts and, when it is sparse, its tables, without spare capacity.
std::string contentOf(const qxArray* array) {
    const std::size_t columns = qxGetN(array);
    const std::size_t stored = array->isSparse() ? array->columnStartTable()[columns] : qxGetNumberOfElements(array);
    std::string content;
    for (const void* part : {array->realData(), array->imagData()}) {
        content.append(static_cast<const char*>(part), part == nullptr ? 0 : stored * qxGetElementSize(array));
    }
    if (array->isSparse()) {
        content.append(reinterpret_cast<const char*>(array->columnStartTable()), (columns + 1) * 4);
        content.append(reinterpret_cast<const char*>(array->rowIndexTable()), stored * 4);
    }
    return content;
}

bool haveSameHeader(const qxArray* first, const qxArray* second) {
    const std::uint32_t fields = first->get_number_of_struct_fields();
    bool same = qxGetClassID(first) == qxGetClassID(second) && first->flags() == second->flags() &&
                first->numberOfDimensions() == second->numberOfDimensions() &&
                second->get_number_of_struct_fields() == fields &&
                std::equal(first->get_dimensions(), first->get_dimensions() + first->numberOfDimensions(),
                           second->get_dimensions());
    for (std::uint32_t field = 0; same && field < fields; ++field) {
        const char* name = first->get_struct_field_name_by_number(field);
        same = qxGetFieldNumber(second, name) == static_cast<int>(field);
    }
    return same;
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
    if (first == nullptr || second == nullptr) {
        return first == second;
    }
    const qxClassID id = qxGetClassID(first);
    if (!haveSameHeader(first, second)) {
        return false;
    }
    if (id != qxCELL_CLASS && id != qxSTRUCT_CLASS && id != qxFUNCTION_CLASS) {
        return contentOf(first) == contentOf(second);
    }
    const std::size_t slots =
        qxGetNumberOfElements(first) * (id == qxSTRUCT_CLASS ? first->get_number_of_struct_fields() : 1);
    for (std::size_t slot = 0; slot < slots; ++slot) {
        if (!areSame(qxGetCell(first, slot), qxGetCell(second, slot))) {
            return false;
        }
    }
    return true;
}
