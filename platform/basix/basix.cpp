#include "basix/basix.h"

#include "codepage.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Appends the character at `text` in UTF-16 and returns the bytes that it took. A surrogate in three bytes goes in
/// as the unit that it stands for, so that two of them make a pair; a damaged byte becomes U+FFFD.
std::size_t appendCharacter(std::u16string& units, const char* text) {
    const auto lead = static_cast<unsigned char>(*text);
    const std::size_t bytes = lead < 0x80 ? 1 : lead >= 0xF0 && lead < 0xF5 ? 4 : lead >= 0xE0 && lead < 0xF0 ? 3 : 2;
    std::uint32_t point = bytes == 1 ? lead : lead & (0xFFU >> (bytes + 1));
    bool whole = lead < 0x80 || (lead >= 0xC0 && lead < 0xF5);
    for (std::size_t i = 1; whole && i < bytes; ++i) {
        whole = isContinuation(text[i]);
        point = (point << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    if (!whole || point > 0x10FFFF) {
        units += u'\xFFFD';
        return 1;
    }
    if (point >= 0x10000) {
        units += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10U));
        units += static_cast<char16_t>(0xDC00 + (point & 0x3FFU));
    } else {
        units += static_cast<char16_t>(point);
    }
    return bytes;
}

/// Converts into a malloc'd block of `capacity` units, or returns null with the status telling why; `needed` gets the
/// length without the NUL.
utf16_t* convert(UConverter* converter, const char* text, std::int32_t length, std::int32_t capacity,
                 std::int32_t& needed, UErrorCode& status) {
    auto* units = static_cast<utf16_t*>(std::malloc(static_cast<std::size_t>(capacity) * sizeof(utf16_t)));
    if (units == nullptr) {
        status = U_MEMORY_ALLOCATION_ERROR;
        return nullptr;
    }
    status = U_ZERO_ERROR;
    needed = ucnv_toUChars(converter, units, capacity, text, length, &status);
    if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) {
        std::free(units);
        return nullptr;
    }
    return units;
}

}  // namespace

utf16_t* lcp_to_utf16(const char* text, int length) {
    UConverter* converter = basix::currentCodePage().converter;
    if (text == nullptr || converter == nullptr || length < -1) {
        return nullptr;
    }
    const std::size_t bytes = length == -1 ? std::strlen(text) : static_cast<std::size_t>(length);
    if (bytes >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return nullptr;
    }
    const auto byteCount = static_cast<std::int32_t>(bytes);
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t needed = 0;
    utf16_t* units = convert(converter, text, byteCount, byteCount + 1, needed, status);
    if (status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING) {
        units = convert(converter, text, byteCount, needed + 1, needed, status);
    }
    return units;
}

std::size_t utf16_strlen(const utf16_t* text) { return std::char_traits<utf16_t>::length(text); }

void utFree(void* block) { std::free(block); }

bool utIsMultiByteLead(unsigned char byte) { return basix::currentCodePage().leads[byte]; }

bool utSetCodePage(const char* name) { return basix::selectCodePage(name); }

std::string utLocalText(const char* utf8) {
    std::u16string units;
    while (*utf8 != '\0') {
        utf8 += appendCharacter(units, utf8);
    }
    UConverter* converter = basix::currentCodePage().converter;
    constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max() / 16;
    if (converter == nullptr || units.size() > longest) {
        return {};
    }
    const auto unitCount = static_cast<std::int32_t>(units.size());
    std::string bytes(
        static_cast<std::size_t>(UCNV_GET_MAX_BYTES_FOR_STRING(unitCount, ucnv_getMaxCharSize(converter))), '\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t written = ucnv_fromUChars(converter, bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                                 units.data(), unitCount, &status);
    bytes.resize(U_FAILURE(status) ? 0 : static_cast<std::size_t>(written));
    return bytes;
}
