#pragma once

#include "tojava/gather.h"
#include "tojava/visitsource.h"

#include <cstddef>
#include <type_traits>

namespace nativevrl {

/// Reads stored elements as T, whatever their own type is: the walks work on this and know no source types. The
/// addresses that it takes are of elements of that type.
template <typename T>
struct ElementReader {
    /// Bytes of a stored element.
    std::size_t width;
    /// A stored element has the bits of the T that it is cast to.
    bool asStored;
    /// The element at an index.
    T (*at)(const void* elements, std::size_t index);
    /// Copies elements into rows at `to`.
    void (*gather)(const void* from, const GatherShape& shape, T* to);
};

/// The same type, or integers of one width: the cast keeps the bits.
template <typename T, typename S>
constexpr bool keepsBits = std::is_same_v<T, S> ||
                           (std::is_integral_v<T> && std::is_integral_v<S> && sizeof(T) == sizeof(S));

template <typename T, typename S>
constexpr ElementReader<T> readerOf() {
    // Signed and unsigned integers of one width may be read as one another, so they share their code.
    using Stored = std::conditional_t<keepsBits<T, S>, T, S>;
    return {
        sizeof(S), keepsBits<T, S>,
        [](const void* elements, std::size_t index) {
            return castElement<T>(static_cast<const Stored*>(elements)[index]);
        },
        [](const void* from, const GatherShape& shape, T* to) { gather(static_cast<const Stored*>(from), shape, to); }};
}

/// Reads the elements of a class as T. False for a class without numbers, truth values or text.
template <typename T>
bool findReader(qxClassID classId, ElementReader<T>& reader) {
    return visitSource(classId, [&](auto source) { reader = readerOf<T, typename decltype(source)::Type>(); });
}

}  // namespace nativevrl
