#pragma once

#include "qx/qx.h"

#include <cstdint>

namespace qx {

/// Number of stored elements of a sparse array; 0 without column starts.
std::uint32_t storedCount(const qxArray* sparse) noexcept;

/// Whether the tables of a sparse matrix fit together: column starts rise from 0 to no more than the capacity, the rows
/// of each column rise strictly and lie inside the matrix, and the blocks are there. Nothing that walks the tables may
/// trust them before, since whoever holds the array can replace them.
bool hasValidTables(const qxArray* sparse) noexcept;

}  // namespace qx
