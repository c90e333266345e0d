#include "utf8.h"

namespace tether {

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// How many bytes the sequence at `at` has: 1 to 4, or 0 when no sequence starts there.
int sequenceLength(const char* at) {
    const auto lead = static_cast<unsigned char>(*at);
    const int length = lead < 0x80                    ? 1
                       : lead >= 0xC0 && lead <= 0xDF ? 2
                       : lead >= 0xE0 && lead <= 0xEF ? 3
                       : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                      : 0;
    for (int i = 1; i < length; ++i) {
        if (!isContinuation(at[i])) {
            return 0;
        }
    }
    return length;
}

char32_t decode(const char* at, int length) {
    constexpr unsigned char leadMask[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t point = static_cast<unsigned char>(*at) & leadMask[length];
    for (int i = 1; i < length; ++i) {
        point = (point << 6U) | (static_cast<unsigned char>(at[i]) & 0x3FU);
    }
    return point;
}

void append(std::u16string& units, char32_t point) {
    if (point > 0x10FFFF) {
        units += u'\xFFFD';
    } else if (point >= 0x10000) {
        units += static_cast<char16_t>(0xD7C0 + (point >> 10U));
        units += static_cast<char16_t>(0xDC00 + (point & 0x3FFU));
    } else {
        units += static_cast<char16_t>(point);
    }
}

}  // namespace

bool isModifiedUtf8(const char* text) {
    while (*text != '\0') {
        const int length = sequenceLength(text);
        if (length == 0 || length == 4) {
            return false;
        }
        text += length;
    }
    return true;
}

std::u16string utf16FromLooseUtf8(const char* text) {
    std::u16string units;
    while (*text != '\0') {
        const int length = sequenceLength(text);
        if (length == 0) {
            units += u'\xFFFD';
            ++text;
        } else {
            append(units, decode(text, length));
            text += length;
        }
    }
    return units;
}

}  // namespace tether
