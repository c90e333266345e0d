#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace nativevrl::JConvert {

/// Extents as a plain block for a call of the array library: on the stack for all ordinary numbers of dimensions.
class PlainExtents {
public:
    /// As many as `count`, all 0.
    explicit PlainExtents(std::size_t count) : count_(count) {
        if (count > mostOnStack) {
            onHeap_.resize(count);
        }
    }

    template <typename Iterator>
    PlainExtents(Iterator begin, Iterator end) : PlainExtents(static_cast<std::size_t>(end - begin)) {
        std::copy(begin, end, data());
    }
    PlainExtents(std::initializer_list<std::uint32_t> extents) : PlainExtents(extents.begin(), extents.end()) {}

    std::uint32_t count() const noexcept { return static_cast<std::uint32_t>(count_); }
    std::uint32_t* data() noexcept { return onHeap_.empty() ? onStack_ : onHeap_.data(); }
    const std::uint32_t* data() const noexcept { return onHeap_.empty() ? onStack_ : onHeap_.data(); }

private:
    static constexpr std::size_t mostOnStack = 10;

    std::size_t count_;
    std::uint32_t onStack_[mostOnStack] = {};
    std::vector<std::uint32_t> onHeap_;
};

}  // namespace nativevrl::JConvert
