#pragma once

#include "layout/rowbuffer.h"

#include <algorithm>
#include <cstddef>

namespace nativevrl {

/// A buffer between native storage and Java: rows are gathered into it, and each goes to Java in one copy. Column-major
/// storage is then read along its columns, some rows at a time, and not once through for each row. Its size does not
/// depend on the array beyond a limit. Small needs are met without an allocation.
template <typename T>
class GatherTile : private RowBuffer<T> {
    using Rows = RowBuffer<T>;

public:
    static constexpr std::size_t largest = (std::size_t{256} << 10U) / sizeof(T);
    static constexpr std::size_t smallest = (std::size_t{16} << 10U) / sizeof(T);

    GatherTile() : Rows(small_, smallest) {}

    /// Makes room for up to `wanted` elements, within the limits, and returns for how many there is room: at least
    /// `smallest`. What was in the buffer is lost.
    std::size_t makeRoom(std::size_t wanted) {
        wanted = std::min(wanted, largest);
        if (wanted > capacity()) {
            this->grow(wanted);
        }
        return capacity();
    }

    using Rows::capacity;
    using Rows::line;
    using Rows::pitch;
    using Rows::row;
    using Rows::setPitch;

private:
    alignas(cacheLine) T small_[smallest];
};

}  // namespace nativevrl
