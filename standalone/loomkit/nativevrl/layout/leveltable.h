#pragma once

#include "layout/dimensionmaps.h"

#include <vector>

namespace nativevrl {

/// One nesting level of an array, in elements.
struct LevelExtent {
    unsigned size;    ///< how many subscript values there are
    unsigned stride;  ///< distance between two neighbouring subscript values
    unsigned span;    ///< size times stride: the whole extent of the level
};

/// One entry per dimension, indexed by nesting level.
using LevelTable = std::vector<LevelExtent>;

/// Nested Java arrays follow JavaDimensionNestingOrder instead of the native order when this is set. It never is.
extern bool useJavaDimensionOrder;

/// Throws the std::overflow_error of a product that does not fit.
[[noreturn]] void refuseProduct(unsigned a, unsigned b);

/// The product in 32 bits; std::overflow_error with both factors when it does not fit.
inline unsigned multiplyChecked(unsigned a, unsigned b) {
    unsigned product = 0;
    if (__builtin_mul_overflow(a, b, &product)) {
        refuseProduct(a, b);
    }
    return product;
}

/// Levels one after the other, the one that runs fastest first, without a table on the heap.
class LevelWalker {
public:
    /// The level of the next dimension. Throws std::overflow_error as multiplyChecked does.
    LevelExtent next(unsigned size) {
        const LevelExtent level{size, stride_, multiplyChecked(size, stride_)};
        stride_ = level.span;
        return level;
    }

private:
    unsigned stride_ = 1;
};

/// The levels of an array with these dimensions. The dimension that the order names first runs fastest. No
/// dimension at all gives one level of one element. Throws std::overflow_error as multiplyChecked does.
LevelTable buildLevelTable(const std::vector<unsigned>& dimensions, const IMapFunction<unsigned, unsigned>& order);

}  // namespace nativevrl
