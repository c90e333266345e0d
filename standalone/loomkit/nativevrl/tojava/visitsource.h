#pragma once

#include "layout/elementclass.h"

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
    return visitElementClass(
        id,
        [&](auto one) {
            visit(SourceElement<typename decltype(one)::Stored>{});
            return true;
        },
        [] { return false; });
}

}  // namespace nativevrl
