#pragma once

#include "boundary/arrayparts.h"
#include "layout/elementclass.h"
#include "tojava/gather.h"

#include <cassert>
#include <cstddef>
#include <optional>
#include <type_traits>

namespace nativevrl {

/// One part of an array, read as T whatever its elements are stored as: the walks work on this and know no element
/// types. The block is borrowed and must not change; it may be null where nothing is read.
template <typename T>
class PartView {
public:
    /// The real or the imaginary part. Nothing for a class without numbers, truth values or text.
    static std::optional<PartView> of(const qxArray* array, bool real) {
        using View = std::optional<PartView>;
        return visitElementClass(
            classIdOf(array),
            [&](auto one) -> View { return PartView(array, real, Stored<typename decltype(one)::Stored>{}); },
            []() -> View { return std::nullopt; });
    }

    /// The slots of a cell, struct or function handle array, where T is a pointer to their arrays.
    static PartView ofSlots(const qxArray* array, bool real) { return PartView(array, real, Stored<T>{}); }

    /// Bytes of a stored element.
    std::size_t width() const noexcept { return width_; }

    /// Where the element at an index is stored.
    const std::byte* addressOf(std::size_t index) const noexcept { return block_ + index * width_; }

    /// The element at an index.
    T at(std::size_t index) const { return readAt_(block_, index); }

    /// Whether elements this far apart lie as T[] does.
    bool isRun(std::size_t stride) const noexcept { return stride == 1 && keepsBits_; }

    /// What lies as T[], from an index on.
    const T* runFrom(std::size_t index) const {
        assert(keepsBits_);
        return reinterpret_cast<const T*>(addressOf(index));
    }

    /// Copies elements from an index on into rows at `to`.
    void gatherFrom(std::size_t index, const GatherShape& shape, T* to) const { gather_(addressOf(index), shape, to); }

private:
    template <typename S>
    struct Stored {
        using Type = S;
    };

    /// The same type, or integers of one width: the cast keeps the bits.
    template <typename S>
    static constexpr bool keepsBits = std::is_same_v<T, S> ||
                                      (std::is_integral_v<T> && std::is_integral_v<S> && sizeof(T) == sizeof(S));

    template <typename S>
    PartView(const qxArray* array, bool real, Stored<S>)
        : block_(static_cast<const std::byte*>(partOf(array, real))), width_(sizeof(S)), keepsBits_(keepsBits<S>) {
        assert(qxGetElementSize(array) == sizeof(S));
        // Signed and unsigned integers of one width may be read as one another, so they share their code.
        using Read = std::conditional_t<keepsBits<S>, T, S>;
        readAt_ = [](const std::byte* block, std::size_t index) {
            return castElement<T>(reinterpret_cast<const Read*>(block)[index]);
        };
        gather_ = [](const std::byte* from, const GatherShape& shape, T* to) {
            gather(reinterpret_cast<const Read*>(from), shape, to);
        };
    }

    const std::byte* block_;
    std::size_t width_;
    bool keepsBits_;
    T (*readAt_)(const std::byte* block, std::size_t index);
    void (*gather_)(const std::byte* from, const GatherShape& shape, T* to);
};

}  // namespace nativevrl
