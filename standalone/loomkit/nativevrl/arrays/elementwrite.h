#pragma once

#include "arrays/elementaddress.h"
#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "layout/visitclass.h"
#include "proxies/jobjectproxy.h"
#include "proxies/numericcast.h"

#include <type_traits>

namespace nativevrl {

/// A Java value as an element that Java knows as E. Plain casts; uint32 takes the bits of int32, so a floating value
/// gets there through 32 bits. A logical element looks at the low byte alone and is 1 or 0.
template <typename E, typename V>
E elementFrom(V value) {
    if constexpr (std::is_same_v<E, jboolean>) {
        return castToLogical(castElement<jboolean>(value));
    } else {
        return castElement<E>(value);
    }
}

/// The same from an object, which is read as E; null raises java.lang.NullPointerException.
template <typename E>
E elementFrom(const JObjectProxy& value) {
    if (value.isNull()) {
        tether::throwNullPointer(value.env());
    }
    return elementFrom<E>(value.as<E>());
}

template <typename V>
void writeDense(const qxArray* array, std::size_t index, const V& value, bool real) {
    visitPrimitive<PrimitiveVisitor::data>(classIdOf(array), [&](auto element) {
        using E = ElementOf<decltype(element)>;
        const E converted = elementFrom<E>(value);
        static_cast<E*>(partOf(array, real))[index] = converted;
    });
}

/// A write for which memory runs out is lost in silence. The value is converted first: an object's own accessor may
/// come back to the array, which no view may lie over then.
template <typename Address, typename V>
void writeSparse(qxArray* array, Address& address, const V& value, bool real) {
    visitPrimitive<PrimitiveVisitor::type>(classIdOf(array), [&](auto element) {
        using E = ElementOf<decltype(element)>;
        const E converted = elementFrom<E>(value);
        SparseElementView<E> view(array);
        view.setElement(address.sparsePosition(view), converted, real);
    });
}

/// The natives that write one element, at a jint index or a jintArray of subscripts, in one part of the array.
template <typename JavaAddress, typename V>
void writeElement(JNIEnv* env, jobject handle, JavaAddress javaAddress, const V& value, bool real) {
    subscriptGuarded(env, false, [&] {
        qxArray* array = openHandle(env, handle);
        if (array == nullptr) {
            raise(env, "java/lang/RuntimeException", "qxSetAt failed: NULL array pointer");
        }
        checkImaginaryAccess(env, array, real);
        auto address = addressOf(env, javaAddress);
        address.check(array);
        if (array->isSparse()) {
            writeSparse(array, address, value, real);
        } else {
            writeDense(array, address.denseIndex(array), value, real);
        }
        return true;
    });
}

/// The same with the value of an object.
template <typename JavaAddress>
void writeElement(JNIEnv* env, jobject handle, JavaAddress javaAddress, const jobject& value, bool real) {
    guarded([&] { writeElement(env, handle, javaAddress, JObjectProxy(env, value), real); });
}

}  // namespace nativevrl
