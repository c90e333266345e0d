#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace nativevrl {

/// Vectors of 16 bytes, by the width of an element.
template <std::size_t width>
struct Lanes;
template <>
struct Lanes<1> {
    using Vector = std::int8_t __attribute__((vector_size(16)));
};
template <>
struct Lanes<2> {
    using Vector = std::int16_t __attribute__((vector_size(16)));
};
template <>
struct Lanes<4> {
    using Vector = std::int32_t __attribute__((vector_size(16)));
};
template <>
struct Lanes<8> {
    using Vector = std::int64_t __attribute__((vector_size(16)));
};

/// The elements of two vectors at constant places, which count through both.
template <int... place, typename Vector>
Vector shuffled(const Vector& first, const Vector& second) {
#if defined(__clang__) || __GNUC__ >= 12
    return __builtin_shufflevector(first, second, place...);
#else
    return __builtin_shuffle(first, second, Vector{place...});
#endif
}

/// As many lines of elements as a vector has lanes, by their bits: a square that is turned in a few registers.
template <typename Element>
struct SquareBlock {
    using Vector = typename Lanes<sizeof(Element)>::Vector;
    static constexpr std::size_t size = sizeof(Vector) / sizeof(Element);

    Vector lines[size];

    /// Takes the block whose lines lie `pitch` elements apart.
    void load(const Element* from, std::size_t pitch) {
        for (std::size_t i = 0; i < size; ++i) {
            std::memcpy(&lines[i], from + i * pitch, sizeof lines[i]);
        }
    }

    void store(Element* to, std::size_t pitch) const {
        for (std::size_t i = 0; i < size; ++i) {
            std::memcpy(to + i * pitch, &lines[i], sizeof lines[i]);
        }
    }

    /// Turns columns into rows. Each round interleaves the first half of the lines with the second.
    void transpose() { transposeRounds(std::make_integer_sequence<int, size>{}); }

private:
    template <int... lane>
    void transposeRounds(std::integer_sequence<int, lane...>) {
        constexpr int half = size / 2;
        for (std::size_t round = 1; round < size; round *= 2) {
            const SquareBlock old = *this;
            for (std::size_t i = 0; i < half; ++i) {
                const Vector& first = old.lines[i];
                const Vector& second = old.lines[i + half];
                lines[2 * i] = shuffled<(lane / 2 + lane % 2 * 2 * half)...>(first, second);
                lines[2 * i + 1] = shuffled<(half + lane / 2 + lane % 2 * 2 * half)...>(first, second);
            }
        }
    }
};

}  // namespace nativevrl
