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
int findName(const std::vector<std::string>& names, std::string_view name);

}  // namespace qx
