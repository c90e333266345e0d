#include "fieldnames.h"

#include "text/unicode.h"

#include <algorithm>
#include <utility>

namespace qx {

namespace {

bool isAscii(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

bool isFieldName(const char* name) noexcept { return name != nullptr && name[0] != '\0'; }

bool areDistinct(const std::vector<std::string>& names) {
    std::vector<std::u16string> units;
    units.reserve(names.size());
    std::transform(names.begin(), names.end(), std::back_inserter(units), text::utf16FromUtf8);
    std::sort(units.begin(), units.end());
    return std::adjacent_find(units.begin(), units.end()) == units.end();
}

int findName(const std::vector<std::string>& names, std::string_view name) noexcept {
    const auto isSame = [name](const std::string& candidate) { return text::haveSameUnits(candidate, name); };
    auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end() && !isAscii(name)) {
        found = std::find_if(names.begin(), names.end(), isSame);
    }
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

WrittenName writtenName(std::string_view name) {
    const std::u16string units = text::utf16FromUtf8(name);
    std::string text = text::utf8FromUtf16(units);
    const bool isText = text.find('\0') == std::string::npos && text::utf16FromUtf8(text) == units;
    return {isText ? std::move(text) : text::modifiedUtf8FromUtf16(units), isText};
}

}  // namespace qx
