#include "basix/basix.h"

#include "codepage.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

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

}  // namespace

utf16_t* lcp_to_utf16(const char* text, int length) try {
    if (text == nullptr || length < -1) {
        return nullptr;
    }
    const std::string_view bytes(text, length == -1 ? std::strlen(text) : static_cast<std::size_t>(length));
    const std::optional<std::u16string> units = basix::currentCodePage().converters.decode(bytes);
    if (!units) {
        return nullptr;
    }
    const std::size_t size = (units->size() + 1) * sizeof(utf16_t);
    auto* block = static_cast<utf16_t*>(std::malloc(size));
    if (block != nullptr) {
        std::memcpy(block, units->c_str(), size);
    }
    return block;
} catch (const std::bad_alloc&) {
    return nullptr;
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
    return basix::currentCodePage().converters.encode(units);
}
