#include "vrlkrt/vrlkrt.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

int vrlcppArrayToString(const qxArray* array, char** text) try {
    if (array == nullptr || text == nullptr) {
        return -1;
    }
    *text = nullptr;
    const std::string shown = qxToText(array);
    *text = static_cast<char*>(std::malloc(shown.size() + 1));
    if (*text == nullptr) {
        return -1;
    }
    std::memcpy(*text, shown.c_str(), shown.size() + 1);
    return 0;
} catch (const std::bad_alloc&) {
    return -1;
}

void vrlcppFreeString(char* text) { std::free(text); }

std::uint32_t vrlHashNBytes(std::uint32_t seed, std::size_t count, const void* bytes) {
    return XXH32(bytes, count, seed);
}
