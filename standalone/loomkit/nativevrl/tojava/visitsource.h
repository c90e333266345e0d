#pragma once

#include "qx/qx.h"

#include <cstdint>

/// From a class id to the C++ type in which its elements are stored, signed and unsigned apart: a cast to a wider or a
/// floating type has to tell them apart.
namespace nativevrl {

template <typename S>
struct SourceElement {
    using Type = S;
};

/// Double to uint64: the classes of numbers, without logical and char.
constexpr bool isNumericClass(qxClassID id) { return id >= qxDOUBLE_CLASS && id <= qxUINT64_CLASS; }

/// Calls `visit` with the SourceElement of a class that has numbers, truth values or text. False, and no call, for any
/// other.
template <typename Visit>
bool visitSource(qxClassID id, Visit&& visit) {
    switch (id) {
        case qxLOGICAL_CLASS:
        case qxUINT8_CLASS:
            visit(SourceElement<std::uint8_t>{});
            return true;
        case qxCHAR_CLASS:
        case qxUINT16_CLASS:
            visit(SourceElement<std::uint16_t>{});
            return true;
        case qxDOUBLE_CLASS:
            visit(SourceElement<double>{});
            return true;
        case qxSINGLE_CLASS:
            visit(SourceElement<float>{});
            return true;
        case qxINT8_CLASS:
            visit(SourceElement<std::int8_t>{});
            return true;
        case qxINT16_CLASS:
            visit(SourceElement<std::int16_t>{});
            return true;
        case qxINT32_CLASS:
            visit(SourceElement<std::int32_t>{});
            return true;
        case qxUINT32_CLASS:
            visit(SourceElement<std::uint32_t>{});
            return true;
        case qxINT64_CLASS:
            visit(SourceElement<std::int64_t>{});
            return true;
        case qxUINT64_CLASS:
            visit(SourceElement<std::uint64_t>{});
            return true;
        default:
            return false;
    }
}

}  // namespace nativevrl
