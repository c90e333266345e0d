#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qx {

/// A field name is a text of at least one byte.
bool isFieldName(const char* name) noexcept;

/// Two names are one when their UTF-16 units agree: a name may come as UTF-8 or as modified UTF-8.
bool areDistinct(const std::vector<std::string>& names);

/// Zero-based position of a name, by the same rule; -1 when it is not there.
int findName(const std::vector<std::string>& names, std::string_view name) noexcept;

/// How the serialised form holds a name.
struct WrittenName {
    std::string bytes;
    bool isText;

    bool operator==(const WrittenName& other) const noexcept { return isText == other.isText && bytes == other.bytes; }
};

/// The one form of all names that are the same: the UTF-8 of their UTF-16 units as text, or where a text can't hold
/// these, for a lone surrogate or a zero, their modified UTF-8 as bytes.
WrittenName writtenName(std::string_view name);

}  // namespace qx
