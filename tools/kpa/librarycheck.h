#pragma once

#include "vrlkrt/archive/archive.h"

namespace kpa {

/// Refuses an archive whose libraries lack functions of its manifest, naming each. The library for this platform is
/// loaded as the runtime does it, in a process of its own, so that nothing it does then harms this one; those for
/// other platforms are judged by their tables of symbols. Libraries that are no ELF files are not looked at.
/// Throws std::runtime_error.
void requireFunctions(const vrlkrt::ComponentArchive& archive);

}  // namespace kpa
