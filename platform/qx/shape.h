#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qx {

/// Borrowed extents of an array, outermost (row) extent first.
struct Shape {
    std::uint32_t count;
    const std::uint32_t* extents;
};

/// No Java array nests deeper.
constexpr std::uint32_t kMaxDimensions = 255;
constexpr std::uint32_t kMaxExtent = 0x7FFFFFFF;
constexpr std::uint64_t kMaxDenseElements = 0xFFFFFFFF;

/// The extents as a caller gave them, brought to at least two: none makes 0-by-0, one makes n-by-1.
class GivenShape {
public:
    GivenShape(std::uint32_t count, const std::uint32_t* extents) noexcept;
    GivenShape(std::uint32_t rows, std::uint32_t columns) noexcept;
    GivenShape(const GivenShape&) = delete;
    GivenShape& operator=(const GivenShape&) = delete;

    Shape shape() const noexcept { return shape_; }

private:
    std::uint32_t padded_[2] = {};
    Shape shape_ = {2, padded_};
};

/// Elements of a dense array of this shape; nothing when there are too many extents, or one of them or the product is
/// too large, also the product of the extents before a zero.
std::optional<std::size_t> denseElementCount(Shape shape) noexcept;

/// Product of the extents from `first` on, held at the largest size_t.
std::size_t extentProduct(Shape shape, std::uint32_t first) noexcept;

}  // namespace qx
