#pragma once

#include <set>
#include <string>
#include <string_view>

namespace kpa {

/// Names of the functions that a shared object defines for others, by its dynamic symbols. `file` is a whole ELF file
/// of 64 bits, little-endian; none for any other.
std::set<std::string> definedFunctions(std::string_view file);

}  // namespace kpa
