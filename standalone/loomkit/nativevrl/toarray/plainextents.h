#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace nativevrl::JConvert {

/// Extents as a plain block for a call of the array library: on the stack for all ordinary numbers of dimensions.
class PlainExtents {
public:
    template <typename Iterator>
    PlainExtents(Iterator begin, Iterator end) : count_(static_cast<std::size_t>(end - begin)) {
        if (count_ > kOrdinary) {
            many_.resize(count_);
        }
        std::copy(begin, end, many_.empty() ? few_ : many_.data());
    }

    std::uint32_t count() const noexcept { return static_cast<std::uint32_t>(count_); }
    const std::uint32_t* data() const noexcept { return many_.empty() ? few_ : many_.data(); }

private:
    static constexpr std::size_t kOrdinary = 10;

    std::size_t count_;
    std::uint32_t few_[kOrdinary];
    std::vector<std::uint32_t> many_;
};

}  // namespace nativevrl::JConvert
