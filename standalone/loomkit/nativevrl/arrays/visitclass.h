#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <type_traits>
#include <utility>

namespace nativevrl {

/// Stands for the Java type that holds an element of an array class: the unsigned integer classes cross as the bits
/// of the signed type of their width, a logical as a jboolean byte, a char as a jchar.
template <typename T>
struct JavaElement {
    using Type = T;
};

template <typename Element>
using ElementOf = typename std::decay_t<Element>::Type;

/// Calls `visitor` with the JavaElement of a class that has numbers, truth values or text, and `otherwise` with the id
/// of any other.
template <typename Visitor, typename Otherwise>
decltype(auto) visitClass(qxClassID id, Visitor&& visitor, Otherwise&& otherwise) {
    switch (id) {
        case qxLOGICAL_CLASS:
            return visitor(JavaElement<jboolean>{});
        case qxCHAR_CLASS:
            return visitor(JavaElement<jchar>{});
        case qxDOUBLE_CLASS:
            return visitor(JavaElement<jdouble>{});
        case qxSINGLE_CLASS:
            return visitor(JavaElement<jfloat>{});
        case qxINT8_CLASS:
        case qxUINT8_CLASS:
            return visitor(JavaElement<jbyte>{});
        case qxINT16_CLASS:
        case qxUINT16_CLASS:
            return visitor(JavaElement<jshort>{});
        case qxINT32_CLASS:
        case qxUINT32_CLASS:
            return visitor(JavaElement<jint>{});
        case qxINT64_CLASS:
        case qxUINT64_CLASS:
            return visitor(JavaElement<jlong>{});
        default:
            return otherwise(id);
    }
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
