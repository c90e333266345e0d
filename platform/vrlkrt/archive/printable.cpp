#include "vrlkrt/archive/printable.h"

#include <array>
#include <cstdint>

namespace vrlkrt {
namespace {

/// One character of a text that may be damaged.
struct Character {
    char32_t code;
    std::size_t bytes;  ///< 0 for a byte that is no UTF-8
};

constexpr Character noCharacter{0, 0};

/// The form of characters of so many bytes: the bits that mark the first byte, and the lowest code that needs them.
struct Utf8Form {
    unsigned mask;
    unsigned mark;
    char32_t lowest;
};

constexpr std::array<Utf8Form, 4> utf8Forms = {
    {{0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};

Character firstCharacter(std::string_view text) {
    const unsigned first = static_cast<unsigned char>(text.front());
    for (std::size_t bytes = 1; bytes <= utf8Forms.size(); ++bytes) {
        const Utf8Form& form = utf8Forms[bytes - 1];
        if ((first & form.mask) != form.mark || text.size() < bytes) {
            continue;
        }
        char32_t code = first & ~form.mask;
        for (const char next : text.substr(1, bytes - 1)) {
            const unsigned byte = static_cast<unsigned char>(next);
            if ((byte & 0xC0U) != 0x80) {
                return noCharacter;
            }
            code = code << 6 | (byte & 0x3FU);
        }
        const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
        return code < form.lowest || code > 0x10FFFF || surrogate ? noCharacter : Character{code, bytes};
    }
    return noCharacter;
}

/// Whether a terminal would take the character for something else than a mark on the line.
bool isUnsafe(char32_t code) {
    struct Range {
        char32_t first;
        char32_t last;
    };
    constexpr Range unsafe[] = {
        {0x00, 0x1F},        // C0 controls
        {0x7F, 0x9F},        // delete and C1 controls
        {0x61C, 0x61C},      // Arabic letter mark
        {0x200B, 0x200F},    // characters without width, direction marks
        {0x2028, 0x202E},    // separators of lines and paragraphs, embeddings and overrides of direction
        {0x2060, 0x206F},    // isolates and other invisible marks
        {0xFEFF, 0xFEFF},    // byte order mark
        {0xFFF9, 0xFFFB},    // annotations
        {0xE0000, 0xE007F},  // tags
    };
    for (const Range& range : unsafe) {
        if (code >= range.first && code <= range.last) {
            return true;
        }
    }
    return false;
}

void appendEscape(std::string& out, const char* prefix, char32_t value, int digits) {
    out += prefix;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        out += "0123456789abcdef"[value >> shift & 0xFU];
    }
}

void append(std::string& out, const Character& character, std::string_view bytes) {
    if (character.bytes == 0 || character.code <= 0x7F) {
        appendEscape(out, "\\x", static_cast<unsigned char>(bytes.front()), 2);
    } else if (character.code <= 0xFFFF) {
        appendEscape(out, "\\u", character.code, 4);
    } else {
        appendEscape(out, "\\U", character.code, 8);
    }
}

std::string escaped(std::string_view text, std::size_t longest, std::string_view kept) {
    std::string out;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const std::string_view bytes = text.substr(0, character.bytes == 0 ? 1 : character.bytes);
        if (out.size() + bytes.size() > longest) {
            return out + "...";
        }
        const bool keeps = kept.find(bytes.front()) != std::string_view::npos;
        if (keeps || (character.bytes != 0 && !isUnsafe(character.code))) {
            out += bytes;
        } else {
            append(out, character, bytes);
        }
        text.remove_prefix(bytes.size());
    }
    return out;
}

}  // namespace

std::string printable(std::string_view text, std::size_t longest) { return escaped(text, longest, ""); }

std::string printableLines(std::string_view text) { return escaped(text, std::string::npos, "\n\t"); }

}  // namespace vrlkrt
