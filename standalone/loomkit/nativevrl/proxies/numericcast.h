#pragma once

/// Element casts between Java and native types. All are plain casts: no range check, no saturation. A floating
/// value on its way to an integer is truncated to a signed intermediate, of which the low bits are kept; NaN and
/// what lies outside the intermediate's range give its lowest value, on every processor. The loops over these
/// functions have no branch, so that the compiler can turn them into vector code.

#include <cstdint>
#include <limits>
#include <type_traits>

namespace nativevrl {

/// Truncation toward zero to 32 or 64 bits; NaN and out of range give the lowest value.
template <typename Intermediate, typename Floating>
constexpr Intermediate truncateTo(Floating value) {
    static_assert(std::is_same_v<Intermediate, std::int32_t> || std::is_same_v<Intermediate, std::int64_t>);
    static_assert(std::is_floating_point_v<Floating>);
    constexpr auto lowest = static_cast<Floating>(std::numeric_limits<Intermediate>::min());
    constexpr Floating beyond = -lowest;
    // A fraction just below the lowest value truncates to it, and that is what the refusal gives as well.
    const bool fits = value >= lowest && value < beyond;
    return static_cast<Intermediate>(fits ? value : lowest);
}

/// The intermediate that a floating value takes on its way into an integer of type T: 32 bits for up to 16 bits
/// and for int32, 64 bits for uint32 and wider.
template <typename T>
using TruncationFor =
    std::conditional_t<(sizeof(T) < 4) || std::is_same_v<T, std::int32_t>, std::int32_t, std::int64_t>;

/// The plain cast with a stated intermediate.
template <typename T, typename Intermediate, typename S>
constexpr T castThrough(S value) {
    if constexpr (std::is_floating_point_v<S> && std::is_integral_v<T>) {
        return static_cast<T>(truncateTo<Intermediate>(value));
    } else {
        return static_cast<T>(value);
    }
}

/// The plain cast with the usual intermediate. An unsigned 8-bit target gets the low 8 bits: a logical element,
/// which wants a comparison with zero, does not come here.
template <typename T, typename S>
constexpr T castElement(S value) {
    return castThrough<T, TruncationFor<T>>(value);
}

/// A logical element: 1 unless the value is zero. NaN is not zero.
template <typename S>
constexpr std::uint8_t castToLogical(S value) {
    return static_cast<std::uint8_t>(value != S{});
}

}  // namespace nativevrl
