#pragma once

#include "layout/elementclass.h"

#include <type_traits>
#include <utility>

namespace nativevrl {

/// Stands for the Java type that holds an element of an array class.
template <typename T>
struct JavaElement {
    using Type = T;
};

template <typename Element>
using ElementOf = typename std::decay_t<Element>::Type;

/// Calls `visitor` with the JavaElement of a class that has numbers, truth values or text, and `otherwise` with the id
/// of any other. Classes that cross as the same Java type share the visitor's code.
template <typename Visitor, typename Otherwise>
decltype(auto) visitClass(qxClassID id, Visitor&& visitor, Otherwise&& otherwise) {
    return visitElementClass(
        id, [&](auto one) -> decltype(auto) { return visitor(JavaElement<typename decltype(one)::Java>{}); },
        [&]() -> decltype(auto) { return otherwise(id); });
}

/// Two families of visitors, which differ in how their refusal is worded.
enum class PrimitiveVisitor { data, type };

/// Throws std::logic_error for a cell, struct, opaque or object array, std::runtime_error for any other id.
[[noreturn]] void refuseClass(qxClassID id, PrimitiveVisitor family);

/// visitClass for what needs a primitive element, and refuses every other class.
template <PrimitiveVisitor family, typename Visitor>
decltype(auto) visitPrimitive(qxClassID id, Visitor&& visitor) {
    using Result = decltype(visitor(JavaElement<jdouble>{}));
    return visitClass(id, std::forward<Visitor>(visitor),
                      [](qxClassID refused) -> Result { refuseClass(refused, family); });
}

}  // namespace nativevrl
