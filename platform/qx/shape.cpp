#include "shape.h"

#include <algorithm>
#include <limits>

namespace qx {

GivenShape::GivenShape(std::uint32_t count, const std::uint32_t* extents) noexcept {
    if (count == 0 || extents == nullptr) {
        return;
    }
    if (count == 1) {
        padded_[0] = extents[0];
        padded_[1] = 1;
        return;
    }
    shape_ = {count, extents};
}

GivenShape::GivenShape(std::uint32_t rows, std::uint32_t columns) noexcept {
    padded_[0] = rows;
    padded_[1] = columns;
}

std::optional<std::size_t> denseElementCount(Shape shape) noexcept {
    const auto* end = shape.extents + shape.count;
    if (shape.count > kMaxDimensions ||
        std::any_of(shape.extents, end, [](std::uint32_t extent) { return extent > kMaxExtent; })) {
        return std::nullopt;
    }
    // Readers multiply the extents up from the first one, so a zero behind too many elements doesn't help them.
    std::size_t product = 1;
    for (const auto* extent = shape.extents; extent < end && product != 0; ++extent) {
        product *= *extent;
        if (product > kMaxDenseElements) {
            return std::nullopt;
        }
    }
    return product;
}

std::size_t extentProduct(Shape shape, std::uint32_t first) noexcept {
    const auto* begin = shape.extents + first;
    const auto* end = shape.extents + shape.count;
    if (std::find(begin, end, 0U) != end) {
        return 0;
    }
    std::size_t product = 1;
    for (const auto* extent = begin; extent < end; ++extent) {
        if (__builtin_mul_overflow(product, std::size_t{*extent}, &product)) {
            return std::numeric_limits<std::size_t>::max();
        }
    }
    return product;
}

}  // namespace qx
