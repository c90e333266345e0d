#pragma once

#include "qx/arrayowner.h"

#include <string>

namespace kpa {

/// A word of the command line as an array: "3.5" and "2-1i" numbers, "[1 2; 3 4]" a matrix (elements apart by blanks
/// or commas, rows by semicolons), "true" and "false" logicals, "@name" a function handle, "'3'" or any other word
/// text. Throws UsageError for a matrix without its end, with rows of different lengths or with what is no number.
qxArrayOwner parseValue(const std::string& word);

/// Whether parseValue takes the word for a number.
bool isNumber(const std::string& word);

}  // namespace kpa
