#pragma once

#include "proxies/numericcast.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

/// The casts of numericcast.h for runs of adjacent elements.
namespace nativevrl {

/// The plain cast of each element of a run, with the usual intermediate; the runs don't overlap.
template <typename T, typename S>
void castRun(const S* source, std::size_t count, T* target);

namespace runs {

#ifdef __x86_64__

/// The processor's own truncation gives the lowest value for NaN and what is out of range, as truncateTo has it, but
/// without a comparison.
inline __m128i truncateFour(const double* values) {
    return _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_loadu_pd(values)), _mm_cvttpd_epi32(_mm_loadu_pd(values + 2)));
}
inline __m128i truncateFour(const float* values) { return _mm_cvttps_epi32(_mm_loadu_ps(values)); }

inline std::int64_t truncateOne(double value) { return _mm_cvttsd_si64(_mm_set_sd(value)); }
inline std::int64_t truncateOne(float value) { return _mm_cvttss_si64(_mm_set_ss(value)); }

template <typename S>
void truncateRun(const S* source, std::size_t count, std::int32_t* target) {
    constexpr std::size_t four = 4;
    const std::size_t whole = count / four * four;
    for (std::size_t i = 0; i < whole; i += four) {
        const __m128i truncated = truncateFour(source + i);
        std::memcpy(target + i, &truncated, sizeof truncated);
    }
    for (std::size_t i = whole; i < count; ++i) {
        target[i] = truncateTo<std::int32_t>(source[i]);
    }
}

template <typename S>
void truncateRun(const S* source, std::size_t count, std::int64_t* target) {
    std::transform(source, source + count, target, [](S value) { return truncateOne(value); });
}

#else

template <typename Intermediate, typename S>
void truncateRun(const S* source, std::size_t count, Intermediate* target) {
    std::transform(source, source + count, target, truncateTo<Intermediate, S>);
}

#endif

/// By way of intermediates that stay near: each of the two loops is vector code, where one for both is not.
template <typename T, typename S>
void truncateByPieces(const S* source, std::size_t count, T* target) {
    using Intermediate = TruncationFor<T>;
    constexpr std::size_t piece = 256;
    Intermediate truncated[piece];
    for (std::size_t at = 0; at < count; at += piece) {
        const std::size_t length = std::min(piece, count - at);
        truncateRun(source + at, length, truncated);
        castRun(truncated, length, target + at);
    }
}

}  // namespace runs

template <typename T, typename S>
void castRun(const S* source, std::size_t count, T* target) {
    if constexpr (std::is_same_v<T, S>) {
        std::copy_n(source, count, target);
    } else if constexpr (std::is_floating_point_v<S> && std::is_same_v<T, TruncationFor<T>>) {
        runs::truncateRun(source, count, target);
    } else if constexpr (std::is_floating_point_v<S> && std::is_integral_v<T>) {
        runs::truncateByPieces(source, count, target);
    } else {
        std::transform(source, source + count, target, castElement<T, S>);
    }
}

}  // namespace nativevrl
