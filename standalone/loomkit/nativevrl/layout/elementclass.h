#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <cstdint>
#include <utility>

namespace nativevrl {

/// An array class of numbers, truth values or text: how an element is stored, and the Java type that holds its bits.
/// The unsigned integer classes cross as the signed type of their width, a logical as a jboolean byte.
template <qxClassID Id, typename StoredElement, typename JavaElement>
struct ElementClass {
    static constexpr qxClassID id = Id;
    using Stored = StoredElement;
    using Java = JavaElement;
};

using LogicalClass = ElementClass<qxLOGICAL_CLASS, std::uint8_t, jboolean>;
using CharClass = ElementClass<qxCHAR_CLASS, char16_t, jchar>;
using DoubleClass = ElementClass<qxDOUBLE_CLASS, double, jdouble>;

/// Double to uint64: the classes of numbers, without logical and char.
constexpr bool isNumericClass(qxClassID id) { return id >= qxDOUBLE_CLASS && id <= qxUINT64_CLASS; }

/// Calls `visitor` with the ElementClass of a class id, and `otherwise` for an id of any other class or of none. Both
/// give the same type.
template <typename Visitor, typename Otherwise>
decltype(auto) visitElementClass(int id, Visitor&& visitor, Otherwise&& otherwise) {
    switch (id) {
        case qxLOGICAL_CLASS:
            return visitor(LogicalClass{});
        case qxCHAR_CLASS:
            return visitor(CharClass{});
        case qxDOUBLE_CLASS:
            return visitor(DoubleClass{});
        case qxSINGLE_CLASS:
            return visitor(ElementClass<qxSINGLE_CLASS, float, jfloat>{});
        case qxINT8_CLASS:
            return visitor(ElementClass<qxINT8_CLASS, std::int8_t, jbyte>{});
        case qxUINT8_CLASS:
            return visitor(ElementClass<qxUINT8_CLASS, std::uint8_t, jbyte>{});
        case qxINT16_CLASS:
            return visitor(ElementClass<qxINT16_CLASS, std::int16_t, jshort>{});
        case qxUINT16_CLASS:
            return visitor(ElementClass<qxUINT16_CLASS, std::uint16_t, jshort>{});
        case qxINT32_CLASS:
            return visitor(ElementClass<qxINT32_CLASS, std::int32_t, jint>{});
        case qxUINT32_CLASS:
            return visitor(ElementClass<qxUINT32_CLASS, std::uint32_t, jint>{});
        case qxINT64_CLASS:
            return visitor(ElementClass<qxINT64_CLASS, std::int64_t, jlong>{});
        case qxUINT64_CLASS:
            return visitor(ElementClass<qxUINT64_CLASS, std::uint64_t, jlong>{});
        default:
            return otherwise();
    }
}

}  // namespace nativevrl
