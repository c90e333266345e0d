#pragma once

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

/// Number of bytes from `at` on that belong to a NaN of `given` and to the canonical one of `written`; 0 for none.
template <typename Element>
std::size_t restOfNaN(const unsigned char* given, const unsigned char* written, std::size_t count, std::size_t at) {
    const Element canonical = std::numeric_limits<Element>::quiet_NaN();
    for (std::size_t before = 0; before < sizeof(Element) && before <= at; ++before) {
        const std::size_t begin = at - before;
        Element element = 0;
        if (begin + sizeof element > count || std::memcmp(written + begin, &canonical, sizeof canonical) != 0) {
            continue;
        }
        std::memcpy(&element, given + begin, sizeof element);
        if (std::isnan(element)) {
            return sizeof element - before;
        }
    }
    return 0;
}

/// Whether the bytes that an array was read from and those that it is written as differ in the bits of NaNs at most.
inline bool differInNaNsOnly(const unsigned char* given, const unsigned char* written, std::size_t count) {
    for (std::size_t at = 0; at < count; ++at) {
        if (given[at] != written[at]) {
            const std::size_t asDouble = restOfNaN<double>(given, written, count, at);
            const std::size_t rest = asDouble != 0 ? asDouble : restOfNaN<float>(given, written, count, at);
            if (rest == 0) {
                return false;
            }
            at += rest - 1;
        }
    }
    return true;
}
