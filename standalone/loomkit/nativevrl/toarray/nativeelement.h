#pragma once

#include "layout/elementclass.h"
#include "proxies/castrun.h"
#include "proxies/jobjectproxy.h"
#include "qx/qx.h"

#include <jni.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace nativevrl::JConvert {

/// How values come into arrays of one class: the native element, and the object read that feeds it.
template <typename Class>
struct NativeElement {
    static constexpr qxClassID classId = Class::id;
    using Storage = typename Class::Stored;
    using Java = typename Class::Java;
    /// cast is castElement, for which there are faster runs.
    static constexpr bool castsPlainly = classId != qxLOGICAL_CLASS;

    template <typename S>
    static constexpr Storage cast(S value) {
        if constexpr (castsPlainly) {
            return castElement<Storage>(value);
        } else {
            return castToLogical(value);
        }
    }

    /// A number, a text, a Boolean or a Character; anything else gives 0. The object is not null.
    static Storage read(const JObjectProxy& object) { return cast(object.as<Java>()); }
};

using LogicalElement = NativeElement<LogicalClass>;
using CharElement = NativeElement<CharClass>;

/// A word of a function array, which no Java value gives a content: each is stored as 0.
struct FunctionElement {
    static constexpr qxClassID classId = qxFUNCTION_CLASS;
    using Storage = std::uint32_t;
    static constexpr bool castsPlainly = false;

    template <typename S>
    static constexpr Storage cast(S) {
        return 0;
    }
    static Storage read(const JObjectProxy&) { return 0; }
};

/// Calls `visitor` with the NativeElement of a logical, char or numeric class; whether the class is one.
template <typename Visitor>
bool visitNativeElement(int classId, Visitor&& visitor) {
    return visitElementClass(
        classId,
        [&](auto one) {
            visitor(NativeElement<decltype(one)>{});
            return true;
        },
        [] { return false; });
}

/// Copies a run of Java elements into adjacent native ones.
template <typename Target, typename S>
void castRun(const S* source, std::size_t count, typename Target::Storage* target) {
    if constexpr (Target::castsPlainly) {
        nativevrl::castRun(source, count, target);
    } else {
        std::transform(source, source + count, target, [](S value) { return Target::cast(value); });
    }
}

}  // namespace nativevrl::JConvert
