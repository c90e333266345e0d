#pragma once

#include "proxies/jobjectproxy.h"
#include "proxies/numericcast.h"
#include "qx/qx.h"

#include <jni.h>

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace nativevrl::JConvert {

/// How values come into arrays of one class: the native element, and the object read that feeds it.
template <qxClassID Id, typename StoredElement, typename JavaElement>
struct NativeElement {
    static constexpr qxClassID classId = Id;
    using Storage = StoredElement;
    using Java = JavaElement;

    template <typename S>
    static constexpr Storage cast(S value) {
        if constexpr (Id == qxLOGICAL_CLASS) {
            return castToLogical(value);
        } else {
            return castElement<Storage>(value);
        }
    }

    /// A number, a text, a Boolean or a Character; anything else gives 0. The object is not null.
    static Storage read(const JObjectProxy& object) { return cast(object.as<Java>()); }
};

using LogicalElement = NativeElement<qxLOGICAL_CLASS, std::uint8_t, jboolean>;
using CharElement = NativeElement<qxCHAR_CLASS, char16_t, jchar>;
using DoubleElement = NativeElement<qxDOUBLE_CLASS, double, jdouble>;

/// A word of a function array, which no Java value gives a content: each is stored as 0.
struct FunctionElement {
    static constexpr qxClassID classId = qxFUNCTION_CLASS;
    using Storage = std::uint32_t;

    template <typename S>
    static constexpr Storage cast(S) {
        return 0;
    }
    static Storage read(const JObjectProxy&) { return 0; }
};

/// Calls `visitor` with the NativeElement of a logical, char or numeric class; whether the class is one.
template <typename Visitor>
bool visitElementClass(int classId, Visitor&& visitor) {
    switch (classId) {
        case qxLOGICAL_CLASS:
            visitor(LogicalElement{});
            return true;
        case qxCHAR_CLASS:
            visitor(CharElement{});
            return true;
        case qxDOUBLE_CLASS:
            visitor(DoubleElement{});
            return true;
        case qxSINGLE_CLASS:
            visitor(NativeElement<qxSINGLE_CLASS, float, jfloat>{});
            return true;
        case qxINT8_CLASS:
            visitor(NativeElement<qxINT8_CLASS, std::int8_t, jbyte>{});
            return true;
        case qxUINT8_CLASS:
            visitor(NativeElement<qxUINT8_CLASS, std::uint8_t, jbyte>{});
            return true;
        case qxINT16_CLASS:
            visitor(NativeElement<qxINT16_CLASS, std::int16_t, jshort>{});
            return true;
        case qxUINT16_CLASS:
            visitor(NativeElement<qxUINT16_CLASS, std::uint16_t, jshort>{});
            return true;
        case qxINT32_CLASS:
            visitor(NativeElement<qxINT32_CLASS, std::int32_t, jint>{});
            return true;
        case qxUINT32_CLASS:
            visitor(NativeElement<qxUINT32_CLASS, std::uint32_t, jint>{});
            return true;
        case qxINT64_CLASS:
            visitor(NativeElement<qxINT64_CLASS, std::int64_t, jlong>{});
            return true;
        case qxUINT64_CLASS:
            visitor(NativeElement<qxUINT64_CLASS, std::uint64_t, jlong>{});
            return true;
        default:
            return false;
    }
}

/// Copies a run of Java elements into adjacent native ones.
template <typename Target, typename S>
void castRun(const S* source, std::size_t count, typename Target::Storage* target) {
    if constexpr (std::is_same_v<S, typename Target::Storage> && Target::classId != qxLOGICAL_CLASS) {
        std::copy_n(source, count, target);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] = Target::cast(source[i]);
        }
    }
}

}  // namespace nativevrl::JConvert
