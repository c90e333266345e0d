#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

namespace nativevrl {

/// A buffer between native storage and Java: rows are gathered into it, and each goes to Java in one copy. Column-major
/// storage is then read along its columns, some rows at a time, and not once through for each row. Its size does not
/// depend on the array beyond a limit. Small needs are met without an allocation.
template <typename T>
class Tile {
public:
    static constexpr std::size_t kLargest = (std::size_t{256} << 10U) / sizeof(T);
    static constexpr std::size_t kSmallest = (std::size_t{16} << 10U) / sizeof(T);

    Tile() = default;
    Tile(const Tile&) = delete;
    Tile& operator=(const Tile&) = delete;

    /// Makes room for up to `wanted` elements, within the limits, and returns for how many there is room: at least
    /// kSmallest. What was in the buffer is lost.
    std::size_t makeRoom(std::size_t wanted) {
        wanted = std::min(wanted, kLargest);
        if (wanted > capacity_) {
            large_.reset();
            large_.reset(static_cast<T*>(::operator new(wanted * sizeof(T), kAlignment, std::nothrow)));
            capacity_ = large_ ? wanted : kSmallest;
        }
        return capacity_;
    }

    std::size_t capacity() const noexcept { return capacity_; }

    T* data() noexcept { return large_ ? large_.get() : small_; }

    /// Distance between two rows of `length` elements: whole cache lines, and an odd number of them, so that rows at
    /// the same column don't fall into the same cache sets.
    static constexpr std::size_t pitchFor(std::size_t length) { return ((length + kLine - 1) / kLine | 1U) * kLine; }

    /// The largest such distance within `room`, which is a cache line at least.
    static constexpr std::size_t pitchWithin(std::size_t room) { return ((room / kLine - 1) | 1U) * kLine; }

private:
    static constexpr std::align_val_t kAlignment{64};
    static constexpr std::size_t kLine = static_cast<std::size_t>(kAlignment) / sizeof(T);

    /// The heap hands the same pages out call after call; the array library's large blocks are fresh ones, which cost
    /// more to touch than the gathering.
    struct Free {
        void operator()(T* block) const noexcept { ::operator delete(block, kAlignment); }
    };

    std::unique_ptr<T, Free> large_;
    std::size_t capacity_ = kSmallest;
    alignas(64) T small_[kSmallest];
};

}  // namespace nativevrl
