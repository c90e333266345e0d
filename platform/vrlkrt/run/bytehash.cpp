#include "vrlkrt/vrlkrt.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

std::uint32_t vrlHashNBytes(std::uint32_t seed, std::size_t count, const void* bytes) {
    return XXH32(bytes, count, seed);
}
