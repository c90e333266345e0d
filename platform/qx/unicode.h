#pragma once

#include <string>
#include <string_view>

namespace qx {

/// Units of a text that may be UTF-8, modified UTF-8 or damaged: a sequence that is neither becomes U+FFFD, byte by
/// byte.
std::u16string utf16FromUtf8(std::string_view text);

/// Plain UTF-8: surrogate pairs as one sequence, a lone surrogate as U+FFFD.
std::string utf8FromUtf16(std::u16string_view units);

/// Modified UTF-8: every unit by itself, the unit 0 as two bytes.
std::string modifiedUtf8FromUtf16(std::u16string_view units);

}  // namespace qx
