#pragma once

/// Characters of a text in the local code page, as units that separators and letters are compared by.

#include "pathkit/pathkit.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>

/// One character: what it compares as and how many bytes it takes.
struct dsTextUnit {
    std::uint32_t value;
    std::size_t bytes;
};

/// The unit at a byte position that starts a character. A slash compares as a backslash and letters without case;
/// a two-byte character compares equal to no single byte, whatever its second byte is.
inline dsTextUnit dsUnitAt(const std::string& text, std::size_t position) {
    const auto first = static_cast<unsigned char>(text[position]);
    if (dsIsMultiByteLead(first)) {
        const std::uint32_t lead = (first | 0x200U) << 8U;
        if (position + 1 == text.size()) {
            return {lead, 1};
        }
        return {lead | (static_cast<unsigned char>(text[position + 1]) | 0x10000U), 2};
    }
    const int folded = std::tolower(first);
    return {static_cast<std::uint32_t>(folded == '/' ? '\\' : folded), 1};
}

inline bool dsIsSeparatorUnit(dsTextUnit unit) { return unit.value == static_cast<std::uint32_t>('\\'); }

/// Whether the unit is one of the seven bytes of white space.
inline bool dsIsBlankUnit(dsTextUnit unit) {
    constexpr char blanks[] = {' ', '\t', '\v', '\b', '\n', '\r', '\f'};
    for (const char blank : blanks) {
        if (unit.value == static_cast<std::uint32_t>(blank)) {
            return true;
        }
    }
    return false;
}

/// First position at or after `from`, which starts a character, for which `matches(position, unit)` holds; npos when
/// there is none. Positions given to `matches` always start a character.
template <typename Matches>
std::size_t dsFindUnit(const std::string& text, std::size_t from, Matches matches) {
    for (std::size_t position = from; position < text.size();) {
        const dsTextUnit unit = dsUnitAt(text, position);
        if (matches(position, unit)) {
            return position;
        }
        position += unit.bytes;
    }
    return std::string::npos;
}
