#include "text/unicode.h"

#include <utility>

namespace text {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Sequence {
    char32_t point;
    std::size_t length;  // in bytes; 0 where no well-formed sequence starts
};

/// The sequence at the start of a text that is not empty, surrogates and overlong forms included.
Sequence readSequence(std::string_view text) noexcept {
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

std::size_t shortestLength(char32_t point) noexcept {
    return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
}

bool isShortest(const Sequence& sequence) noexcept {
    return sequence.length == shortestLength(sequence.point) && sequence.point <= 0x10FFFF;
}

bool isHighSurrogate(char32_t point) noexcept { return point >= 0xD800 && point <= 0xDBFF; }

bool isLowSurrogate(char32_t point) noexcept { return point >= 0xDC00 && point <= 0xDFFF; }

char32_t pointOfPair(char32_t high, char32_t low) noexcept {
    return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
}

/// Gives the UTF-16 units of a text one after the other.
class UnitReader {
public:
    explicit UnitReader(std::string_view text) noexcept : rest_(text) {}

    bool isAtEnd() const noexcept { return rest_.empty() && second_ == 0; }

    char16_t next() noexcept {
        if (second_ != 0) {
            return std::exchange(second_, u'\0');
        }
        Sequence sequence = readSequence(rest_);
        const bool isModifiedNul = sequence.point == 0 && sequence.length == 2;
        if (sequence.length == 0 || (!isShortest(sequence) && !isModifiedNul)) {
            sequence = {kReplacement, 1};
        }
        rest_.remove_prefix(sequence.length);
        if (sequence.point < 0x10000) {
            return static_cast<char16_t>(sequence.point);
        }
        second_ = static_cast<char16_t>(0xDC00 + (sequence.point & 0x3FFU));
        return static_cast<char16_t>(0xD7C0 + (sequence.point >> 10U));
    }

private:
    std::string_view rest_;
    char16_t second_ = 0;  // of a pair whose first unit was given; 0 for none
};

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
    for (UnitReader reader(text); !reader.isAtEnd();) {
        units += reader.next();
    }
    return units;
}

std::string utf8FromUtf16(std::u16string_view units) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const char32_t next = i + 1 < units.size() ? units[i + 1] : 0;
        if (isHighSurrogate(unit) && isLowSurrogate(next)) {
            appendUtf8(text, pointOfPair(unit, next));
            ++i;
        } else {
            appendUtf8(text, isHighSurrogate(unit) || isLowSurrogate(unit) ? kReplacement : unit);
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

std::string withPairsJoined(std::string text) {
    constexpr std::size_t surrogateLength = 3;
    for (std::size_t at = text.find('\xED'); at != std::string::npos; at = text.find('\xED', at + 1)) {
        const std::string_view rest = std::string_view(text).substr(at);
        const Sequence high = readSequence(rest);
        if (!isHighSurrogate(high.point) || rest.size() == surrogateLength) {
            continue;
        }
        const Sequence low = readSequence(rest.substr(surrogateLength));
        if (isLowSurrogate(low.point)) {
            std::string joined;
            appendUtf8(joined, pointOfPair(high.point, low.point));
            text.replace(at, 2 * surrogateLength, joined);
        }
    }
    return text;
}

bool haveSameUnits(std::string_view first, std::string_view second) noexcept {
    UnitReader one(first);
    UnitReader other(second);
    while (!one.isAtEnd() && !other.isAtEnd()) {
        if (one.next() != other.next()) {
            return false;
        }
    }
    return one.isAtEnd() && other.isAtEnd();
}

bool isModifiedUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = readSequence(text).length;
        if (length == 0 || length == 4) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace text
