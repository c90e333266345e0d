#pragma once

#include <string>
#include <string_view>

/// The kinds of Unicode text that cross the platform: UTF-16 of arrays and of Java, UTF-8 of components and files, and
/// the modified UTF-8 of the virtual machine, which has a surrogate pair as two three-byte sequences and the unit 0 as
/// two bytes. UTF-8 that is read may be plain, modified, mixed or damaged: a sequence that is neither becomes U+FFFD,
/// byte by byte.
namespace text {

std::u16string utf16FromUtf8(std::string_view text);

/// Plain UTF-8: surrogate pairs as one sequence, a lone surrogate as U+FFFD.
std::string utf8FromUtf16(std::u16string_view units);

/// Modified UTF-8: every unit by itself, the unit 0 as two bytes.
std::string modifiedUtf8FromUtf16(std::u16string_view units);

/// Surrogate pairs in a text of either kind as one sequence each, as file systems have them; all other bytes stay.
std::string withPairsJoined(std::string text);

/// Whether two texts stand for the same UTF-16 units.
bool haveSameUnits(std::string_view first, std::string_view second) noexcept;

/// Whether the virtual machine can be handed this text as it stands: sequences of one to three bytes, none of them cut.
bool isModifiedUtf8(std::string_view text) noexcept;

}  // namespace text
