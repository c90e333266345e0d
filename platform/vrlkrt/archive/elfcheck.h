#pragma once

#include <string>
#include <string_view>

namespace vrlkrt {

/// What keeps a file from being a shared object that the loader of a platform could map, worded to follow "the
/// library "; "" when nothing does. The loader itself trusts the file: one that is cut short ends the process.
/// Platforms whose libraries are no ELF files, such as darwin-arm64, are not checked.
[[nodiscard]] std::string elfProblem(std::string_view file, std::string_view platform);

/// The same for the file at a path, of which only the headers are read. "" where it can't be opened.
[[nodiscard]] std::string elfProblemOfFile(const std::string& path, std::string_view platform);

}  // namespace vrlkrt
