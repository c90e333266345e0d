#pragma once

#include "vrlkrt/archive/archive.h"

#include <string>
#include <vector>

namespace kpa {

/// Refuses an archive whose libraries lack functions of its manifest, naming each. The library for this platform is
/// loaded as the runtime does it, in a process of its own, so that nothing it does then harms this one; those for
/// other platforms are judged by their tables of symbols. Throws std::runtime_error. Gives the platforms whose
/// libraries are no ELF files and were not looked into.
[[nodiscard]] std::vector<std::string> requireFunctions(const vrlkrt::ComponentArchive& archive);

}  // namespace kpa
