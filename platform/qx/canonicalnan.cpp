#include "canonicalnan.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace qx {

namespace {

template <typename Element>
[[gnu::always_inline]] inline void copyElements(unsigned char* target, const Element* source, std::size_t count) {
    constexpr Element canonical = std::numeric_limits<Element>::quiet_NaN();
    for (std::size_t i = 0; i < count; ++i) {
        const Element element = std::isnan(source[i]) ? canonical : source[i];
        std::memcpy(target + i * sizeof element, &element, sizeof element);
    }
}

#if defined(__x86_64__)

/// The wide registers, which not every processor has, make the loop as fast as a plain copy.
template <typename Element>
[[gnu::target("avx2")]] void copyInWideRegisters(unsigned char* target, const Element* source, std::size_t count) {
    copyElements(target, source, count);
}

template <typename Element>
void copy(unsigned char* target, const Element* source, std::size_t count) {
    static const bool hasWideRegisters = __builtin_cpu_supports("avx2");
    if (hasWideRegisters) {
        copyInWideRegisters(target, source, count);
    } else {
        copyElements(target, source, count);
    }
}

#else

template <typename Element>
void copy(unsigned char* target, const Element* source, std::size_t count) {
    copyElements(target, source, count);
}

#endif

}  // namespace

void copyWithCanonicalNaN(unsigned char* target, const double* source, std::size_t count) noexcept {
    copy(target, source, count);
}

void copyWithCanonicalNaN(unsigned char* target, const float* source, std::size_t count) noexcept {
    copy(target, source, count);
}

}  // namespace qx
