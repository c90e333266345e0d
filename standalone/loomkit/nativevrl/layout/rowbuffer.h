#pragma once

#include <cassert>
#include <cstddef>
#include <memory>
#include <new>

namespace nativevrl {

/// In bytes.
constexpr std::size_t cacheLine = 64;

/// Distance between two rows of `length` elements, `line` of which fill a cache line: whole lines, and an odd number of
/// them, so that rows at the same column fall into different sets of the cache.
constexpr std::size_t paddedPitch(std::size_t length, std::size_t line) {
    return ((length + line - 1) / line | 1U) * line;
}

/// The largest such distance within `room` elements, a line at least.
constexpr std::size_t paddedPitchWithin(std::size_t room, std::size_t line) { return ((room / line - 1) | 1U) * line; }

static_assert(paddedPitch(0, 8) == 8 && paddedPitch(8, 8) == 8 && paddedPitch(9, 8) == 24 && paddedPitch(24, 8) == 24);
static_assert(paddedPitchWithin(8, 8) == 8 && paddedPitchWithin(23, 8) == 8 && paddedPitchWithin(24, 8) == 24);

/// Rows of elements on their way between native storage and Java, which take up a part of it at a time. Each row begins
/// at a cache line when the distance between rows is a padded one.
template <typename Element>
class RowBuffer {
public:
    static constexpr std::size_t line = cacheLine / sizeof(Element);
    static_assert(line * sizeof(Element) == cacheLine);

    /// Without room.
    RowBuffer() = default;
    /// With room for `capacity` elements in memory of the caller's, which begins at a cache line.
    RowBuffer(Element* memory, std::size_t capacity) : elements_(memory), capacity_(capacity) {}
    RowBuffer(const RowBuffer&) = delete;
    RowBuffer& operator=(const RowBuffer&) = delete;

    /// Makes room for more elements. Whether there is; where not, all stays as it was. What is in the buffer is lost.
    bool grow(std::size_t capacity) {
        assert(capacity > capacity_);
        std::unique_ptr<Element, Free> memory(
            static_cast<Element*>(::operator new(capacity * sizeof(Element), alignment, std::nothrow)));
        if (memory == nullptr) {
            return false;
        }
        memory_ = std::move(memory);
        elements_ = memory_.get();
        capacity_ = capacity;
        return true;
    }

    /// How many elements there is room for.
    std::size_t capacity() const noexcept { return capacity_; }

    /// Sets the distance between rows, in elements.
    void setPitch(std::size_t pitch) noexcept { pitch_ = pitch; }
    std::size_t pitch() const noexcept { return pitch_; }

    /// A row, of pitch() elements; the first one also where the pitch is not set.
    Element* row(std::size_t i) const noexcept {
        assert((i + 1) * pitch_ <= capacity_);
        return elements_ + i * pitch_;
    }

private:
    static constexpr std::align_val_t alignment{cacheLine};

    /// The heap hands the same pages out call after call; the array library's large blocks are fresh ones, which cost
    /// more to touch than the gathering.
    struct Free {
        void operator()(Element* memory) const noexcept { ::operator delete(memory, alignment); }
    };

    std::unique_ptr<Element, Free> memory_;
    Element* elements_ = nullptr;
    std::size_t capacity_ = 0;
    std::size_t pitch_ = 0;
};

}  // namespace nativevrl
