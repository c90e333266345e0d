#pragma once

#include <string>

namespace tether {

/// Whether the text is well-formed modified UTF-8, the only kind that the virtual machine may be handed.
bool isModifiedUtf8(const char* text);

/// The units of a text that may be plain UTF-8, modified UTF-8 or damaged; what is neither becomes U+FFFD.
std::u16string utf16FromLooseUtf8(const char* text);

}  // namespace tether
