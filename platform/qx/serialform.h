#pragma once

#include "classtable.h"
#include "qx/qx.h"

#include <cstddef>
#include <cstdint>

namespace qx {

/// First item of every serialised form; docs/serial-format.md describes the rest.
constexpr std::uint64_t kSerialVersion = 1;

/// Arrays in one another, the outermost included: 100 cells or structs, as deep as Java nests them, and what the
/// innermost holds. The name of a function handle doesn't count.
constexpr std::size_t kMaxSerialDepth = 101;

/// Tag of the row indices and column starts of a sparse array.
constexpr std::uint64_t kIndexTag = kClassTable[qxUINT32_CLASS].typedArrayTag;

/// Items in the list that stands for one array; they tell the layouts of a class apart.
constexpr std::uint64_t kUnknownItems = 2;
constexpr std::uint64_t kDenseItems = 3;
constexpr std::uint64_t kCellItems = 3;
constexpr std::uint64_t kStructItems = 4;
constexpr std::uint64_t kSparseItems = 5;

#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "The serialised form copies blocks as little-endian typed arrays"
#endif

/// Whether a function handle's slot holds what its name is kept in: a char row, or the 0-by-0 of an empty name.
bool isFunctionName(const qxArray* name);

}  // namespace qx
