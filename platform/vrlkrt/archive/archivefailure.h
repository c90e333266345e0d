#pragma once

#include <string>

namespace vrlkrt {

/// How a bad archive is refused: a vrlBaseException with this sentence, made printable.
[[noreturn]] void failArchive(const std::string& sentence);

/// The same for one entry: "Archive entry 'path': problem."
[[noreturn]] void failEntry(const std::string& path, const std::string& problem);

/// The same for the description of the component: "component.json: problem."
[[noreturn]] void failManifest(const std::string& problem);

}  // namespace vrlkrt
