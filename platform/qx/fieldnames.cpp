#include "fieldnames.h"

#include <algorithm>
#include <utility>

#include "unicode.h"

namespace qx {

namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

int positionOf(const std::vector<std::string>& names, std::vector<std::string>::const_iterator found) {
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

}  // namespace

bool isFieldName(const char* name) noexcept { return name != nullptr && name[0] != '\0'; }

bool areDistinct(const std::vector<std::string>& names) {
    std::vector<std::u16string> units;
    units.reserve(names.size());
    std::transform(names.begin(), names.end(), std::back_inserter(units), utf16FromUtf8);
    std::sort(units.begin(), units.end());
    return std::adjacent_find(units.begin(), units.end()) == units.end();
}

int findName(const std::vector<std::string>& names, std::string_view name) {
    const auto same = std::find(names.begin(), names.end(), name);
    if (same != names.end() || isAscii(name)) {
        return positionOf(names, same);
    }
    const std::u16string units = utf16FromUtf8(name);
    return positionOf(names, std::find_if(names.begin(), names.end(), [&](const std::string& candidate) {
                          return utf16FromUtf8(candidate) == units;
                      }));
}

WrittenName writtenName(std::string_view name) {
    const std::u16string units = utf16FromUtf8(name);
    std::string text = utf8FromUtf16(units);
    const bool isText = text.find('\0') == std::string::npos && utf16FromUtf8(text) == units;
    return {isText ? std::move(text) : modifiedUtf8FromUtf16(units), isText};
}

}  // namespace qx
