#include "arrays/subscriptrun.h"

#include "boundary/arrayparts.h"
#include "boundary/castguard.h"
#include "layout/dimensionmaps.h"
#include "proxies/jarrayproxy.h"

#include <algorithm>
#include <vector>

namespace nativevrl {

namespace {

void fillRows(const qxArray* array, jint* target, std::size_t count) {
    const std::uint32_t* rows = array->rowIndexTable();
    std::transform(rows, rows + count, target, [](std::uint32_t row) { return boost::numeric_cast<jint>(row + 1); });
}

void fillColumns(const qxArray* array, jint* target) {
    const std::uint32_t* starts = array->columnStartTable();
    const std::size_t columns = qxGetN(array);
    for (std::size_t column = 1; column <= columns; ++column) {
        const jint value = boost::numeric_cast<jint>(column);
        std::fill(target + starts[column - 1], target + starts[column], value);
    }
}

/// Steps subscripts to the element that follows in storage.
void stepOdometer(std::vector<std::uint32_t>& subscripts, const std::uint32_t* extents, std::uint32_t dimensionCount) {
    const MDimensionNestingOrder order;
    for (std::uint32_t i = 0; i < dimensionCount; ++i) {
        const unsigned dimension = order.map(i);
        if (subscripts[dimension] < extents[dimension]) {
            ++subscripts[dimension];
            return;
        }
        subscripts[dimension] = 1;
    }
}

void fillDense(const qxArray* array, std::uint32_t dimension, jint* target, std::size_t count) {
    // One entry more than there are dimensions: the trailing one, which stays 1.
    const std::uint32_t dimensionCount = array->numberOfDimensions();
    std::vector<std::uint32_t> subscripts(std::size_t{dimensionCount} + 1, 1);
    for (jint* end = target + count; target != end; ++target) {
        *target = static_cast<jint>(subscripts[dimension]);
        stepOdometer(subscripts, array->get_dimensions(), dimensionCount);
    }
}

bool hasDimension(const qxArray* array, jint dimension) {
    return array != nullptr && dimension >= 0 && array->numberOfDimensions() >= static_cast<std::uint32_t>(dimension);
}

/// Number of stored elements along a dimension that is there, else 0.
std::size_t runLength(JNIEnv* env, const qxArray* array, jint dimension) {
    if (!hasDimension(array, dimension)) {
        return 0;
    }
    if (array->get_dimensions() == nullptr) {
        tether::throwNamedException(env, "java/lang/RuntimeException");
        throw tether::Exception();
    }
    return storedElementCount(array);
}

}  // namespace

jintArray subscriptRun(JNIEnv* env, const qxArray* array, jint dimension) {
    return castGuarded(env, nvExceptionClass, "Array index overflow", [&] {
        const std::size_t count = runLength(env, array, dimension);
        NewJPrimitiveArrayProxy<jint> run(env, static_cast<std::size_t>(boost::numeric_cast<jint>(count)));
        if (count == 0) {
            return static_cast<jintArray>(run.detach());
        }
        if (!array->isSparse()) {
            fillDense(array, static_cast<std::uint32_t>(dimension), run.getElements(), count);
        } else if (dimension == 0) {
            fillRows(array, run.getElements(), count);
        } else {
            fillColumns(array, run.getElements());
        }
        return static_cast<jintArray>(run.detach());
    });
}

}  // namespace nativevrl
