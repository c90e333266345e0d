#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace basix {

/// One thread's converters between a code page and UTF-16 of the machine's byte order. They carry state, so that no two
/// threads share one.
class Converters {
public:
    /// A name that the C library's converters don't know gives converters that convert nothing.
    explicit Converters(const std::string& codePage);
    ~Converters();
    Converters(const Converters&) = delete;
    Converters& operator=(const Converters&) = delete;

    bool areThere() const noexcept;
    /// UTF-16 of a text in the code page; none when it is malformed or ends inside a character.
    std::optional<std::u16string> decode(std::string_view text) const;
    /// Text in the code page; what it has no character for becomes the control character SUB.
    std::string encode(std::u16string_view units) const;
    /// Whether the byte is one that a second one has to follow.
    bool isLead(unsigned char byte) const;

private:
    void* toUnits_;
    void* fromUnits_;
};

/// The local code page as one thread sees it.
struct CodePage {
    const Converters& converters;
    const std::array<bool, 256>& leads;
};

/// The calling thread's view, valid until the thread asks again.
CodePage currentCodePage();

/// Makes a code page the local one; null returns to the locale's. False, with nothing changed, for an unknown name.
bool selectCodePage(const char* name);

}  // namespace basix
