#include "vrlkrt/vrlkrt.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

std::uint32_t vrlHashNBytes(std::uint32_t seed, std::size_t count, const void* bytes) {
    constexpr char nothing = 0;
    return bytes == nullptr ? XXH32(&nothing, 0, seed) : XXH32(bytes, count, seed);
}
