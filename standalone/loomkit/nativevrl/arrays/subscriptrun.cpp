#include "arrays/subscriptrun.h"

#include "boundary/arrayparts.h"
#include "boundary/castguard.h"
#include "proxies/jarrayproxy.h"

#include <algorithm>
#include <functional>
#include <numeric>

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

/// Each subscript stands for as many elements as there are along the dimensions before. A trailing dimension has an
/// extent of 1.
void fillDense(const qxArray* array, std::uint32_t dimension, jint* target, std::size_t count) {
    const std::uint32_t* extents = array->get_dimensions();
    const std::uint32_t extent = dimension < array->numberOfDimensions() ? extents[dimension] : 1;
    const std::size_t stride =
        std::accumulate(extents, extents + dimension, std::size_t{1}, std::multiplies<std::size_t>());
    for (std::size_t at = 0; at < count;) {
        for (std::uint32_t subscript = 1; subscript <= extent; ++subscript, at += stride) {
            std::fill_n(target + at, stride, static_cast<jint>(subscript));
        }
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
