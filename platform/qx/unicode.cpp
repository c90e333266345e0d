#include "unicode.h"

namespace qx {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Sequence {
    char32_t point;
    std::size_t length;  // in bytes; 0 where no well-formed sequence starts
};

/// The sequence at the start of `text`, surrogates and overlong forms included.
Sequence readSequence(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xC0 && lead <= 0xDF   ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || text.size() < length) {
        return {kReplacement, 0};
    }
    char32_t point = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0U) != 0x80U) {
            return {kReplacement, 0};
        }
        point = (point << 6U) | (byte & 0x3FU);
    }
    return {point, length};
}

std::size_t shortestLength(char32_t point) { return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4; }

bool isSurrogate(char32_t point) { return point >= 0xD800 && point <= 0xDFFF; }

bool isShortest(const Sequence& sequence) {
    return sequence.length == shortestLength(sequence.point) && sequence.point <= 0x10FFFF;
}

void appendSequence(std::string& text, char32_t point, std::size_t length) {
    constexpr unsigned char leadBits[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (std::size_t i = 0; i < length; ++i) {
        const auto bits = static_cast<unsigned char>(point >> (6 * (length - 1 - i)));
        const unsigned char continuation = 0x80U | (bits & 0x3FU);
        text += static_cast<char>(i != 0 ? continuation : leadBits[length] | bits);
    }
}

void appendUtf8(std::string& text, char32_t point) {
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else {
        appendSequence(text, point, shortestLength(point));
    }
}

}  // namespace

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string units;
    while (!text.empty()) {
        Sequence sequence = readSequence(text);
        const bool isModifiedNul = sequence.point == 0 && sequence.length == 2;
        if (sequence.length == 0 || (!isShortest(sequence) && !isModifiedNul)) {
            sequence = {kReplacement, 1};
        }
        if (sequence.point >= 0x10000) {
            units += static_cast<char16_t>(0xD7C0 + (sequence.point >> 10U));
            units += static_cast<char16_t>(0xDC00 + (sequence.point & 0x3FFU));
        } else {
            units += static_cast<char16_t>(sequence.point);
        }
        text.remove_prefix(sequence.length);
    }
    return units;
}

std::string utf8FromUtf16(std::u16string_view units) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
        const char32_t next = i + 1 < units.size() ? units[i + 1] : 0;
        if (isHigh && next >= 0xDC00 && next <= 0xDFFF) {
            appendUtf8(text, 0x10000 + ((unit - 0xD800) << 10U) + (next - 0xDC00));
            ++i;
        } else {
            appendUtf8(text, isSurrogate(unit) ? kReplacement : unit);
        }
    }
    return text;
}

std::string modifiedUtf8FromUtf16(std::u16string_view units) {
    std::string text;
    for (const char16_t unit : units) {
        if (unit == 0) {
            appendSequence(text, 0, 2);
        } else {
            appendUtf8(text, unit);
        }
    }
    return text;
}

}  // namespace qx
