#include "codepage.h"

#include <iconv.h>

#include <cerrno>
#include <cstddef>

namespace basix {

namespace {

constexpr const char* machineUtf16 = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? "UTF-16LE" : "UTF-16BE";

/// What iconv_open gives when it fails.
void* nothing() noexcept { return iconv_t(-1); }

/// What a text or its units have left to convert, in bytes.
struct Rest {
    char* at;
    std::size_t bytes;
};

/// Converts as much as fits into one buffer after another, which `append` takes with its length in bytes. Returns 0 or
/// what stopped it: EILSEQ for a character that is none or has no counterpart, EINVAL for one that is cut off.
template <typename Append>
int convert(void* converter, Rest& rest, Append&& append) {
    for (;;) {
        alignas(char16_t) char buffer[1024];
        char* end = buffer;
        std::size_t room = sizeof buffer;
        const bool isDone = iconv(converter, &rest.at, &rest.bytes, &end, &room) != static_cast<std::size_t>(-1);
        const int stopped = isDone ? 0 : errno;
        append(buffer, static_cast<std::size_t>(end - buffer));
        if (stopped != E2BIG) {
            return stopped;
        }
    }
}

/// Back to the state in which a text starts.
void restart(void* converter) {
    if (converter != nothing()) {
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
    }
}

/// The C library takes Shift_JIS by the letter of its standard; what is called so has the additions of code page 932.
std::string customary(const std::string& codePage) {
    std::string plain;
    for (const char c : codePage) {
        if (c >= 'a' && c <= 'z') {
            plain += static_cast<char>(c - 'a' + 'A');
        } else if (c != '_' && c != '-') {
            plain += c;
        }
    }
    return plain == "SHIFTJIS" || plain == "SJIS" ? "CP932" : codePage;
}

}  // namespace

// A slash in a name starts wishes of how to convert, and is part of no name.
Converters::Converters(const std::string& codePage) : toUnits_(nothing()), fromUnits_(nothing()) {
    if (!codePage.empty() && codePage.find('/') == std::string::npos) {
        const std::string name = customary(codePage);
        toUnits_ = iconv_open(machineUtf16, name.c_str());
        fromUnits_ = iconv_open(name.c_str(), machineUtf16);
    }
}

Converters::~Converters() {
    for (void* converter : {toUnits_, fromUnits_}) {
        if (converter != nothing()) {
            iconv_close(converter);
        }
    }
}

bool Converters::areThere() const noexcept { return toUnits_ != nothing() && fromUnits_ != nothing(); }

std::optional<std::u16string> Converters::decode(std::string_view text) const {
    std::u16string units;
    const auto append = [&](const char* bytes, std::size_t count) {
        units.append(reinterpret_cast<const char16_t*>(bytes), count / sizeof(char16_t));
    };
    restart(toUnits_);
    Rest rest = {const_cast<char*>(text.data()), text.size()};
    if (!areThere() || convert(toUnits_, rest, append) != 0) {
        return std::nullopt;
    }
    return units;
}

std::string Converters::encode(std::u16string_view units) const {
    std::string text;
    const auto append = [&](const char* bytes, std::size_t count) { text.append(bytes, count); };
    restart(fromUnits_);
    Rest rest = {reinterpret_cast<char*>(const_cast<char16_t*>(units.data())), units.size() * sizeof(char16_t)};
    while (areThere() && convert(fromUnits_, rest, append) != 0 && rest.bytes >= sizeof(char16_t)) {
        constexpr char substitute = '\x1A';
        text += substitute;
        const auto unit = *reinterpret_cast<const char16_t*>(rest.at);
        const bool isPair = unit >= 0xD800 && unit < 0xDC00 && rest.bytes >= 2 * sizeof(char16_t);
        rest.at += (isPair ? 2 : 1) * sizeof(char16_t);
        rest.bytes -= (isPair ? 2 : 1) * sizeof(char16_t);
    }
    return text;
}

bool Converters::isLead(unsigned char byte) const {
    char one = static_cast<char>(byte);
    Rest rest = {&one, 1};
    restart(toUnits_);
    return areThere() && convert(toUnits_, rest, [](const char*, std::size_t) {}) == EINVAL;
}

}  // namespace basix
