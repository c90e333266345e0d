#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vrlkrt {

/// How much of a text from an archive goes into a message.
constexpr std::size_t longestQuote = 400;

/// Text from outside made fit for a terminal or a message, in UTF-8. What a terminal would obey, what reorders or
/// breaks the line (controls, bidirectional marks, separators) and what is no UTF-8 stands as `\x1b` or `\u202e`.
/// A text that comes to more than `longest` bytes is cut there and ends with "...".
[[nodiscard]] std::string printable(std::string_view text, std::size_t longest = std::string::npos);

/// The same for a text of several lines, whose line feeds and tabs stay.
[[nodiscard]] std::string printableLines(std::string_view text);

}  // namespace vrlkrt
