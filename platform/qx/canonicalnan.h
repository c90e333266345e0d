#pragma once

#include <cstddef>

namespace qx {

/// Copies `count` elements to bytes of any alignment, each NaN as the quiet one with a clear sign and no payload: what
/// the processor makes of 0/0 has other bits than a literal NaN, and equal arrays have one serialised form.
void copyWithCanonicalNaN(unsigned char* target, const double* source, std::size_t count) noexcept;
void copyWithCanonicalNaN(unsigned char* target, const float* source, std::size_t count) noexcept;

}  // namespace qx
