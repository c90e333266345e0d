#pragma once

#include "arrays/elementaddress.h"
#include "arrays/sparseelementview.h"
#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "layout/elementclass.h"
#include "layout/refuseclass.h"
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

/// Calls `store` with the value as an element of the array's class; a class without primitive elements is refused in
/// the words of a family.
template <PrimitiveVisitor family, typename V, typename Store>
void convertAndStore(const qxArray* array, const V& value, Store&& store) {
    const qxClassID classId = classIdOf(array);
    visitElementClass(
        classId, [&](auto one) { store(elementFrom<typename decltype(one)::Java>(value)); },
        [classId] { refuseClass(classId, family); });
}

template <typename V>
void writeDense(const qxArray* array, std::size_t index, const V& value, bool real) {
    convertAndStore<PrimitiveVisitor::data>(
        array, value, [&](auto element) { static_cast<decltype(element)*>(partOf(array, real))[index] = element; });
}

/// A write for which memory runs out is lost in silence. The value is converted first: an object's own accessor may
/// come back to the array, which no view may lie over then.
template <typename V>
void writeSparse(qxArray* array, SparsePosition at, const V& value, bool real) {
    convertAndStore<PrimitiveVisitor::type>(
        array, value, [&](auto element) { SparseElementView<decltype(element)>(array).setElement(at, element, real); });
}

/// The natives that write one element, at a jint index or a jintArray of subscripts, in one part of the array.
template <typename JavaAddress, typename V>
void writeElement(JNIEnv* env, jobject handle, JavaAddress javaAddress, const V& value, bool real) {
    subscriptGuarded(env, [&] {
        qxArray* array = openHandle(env, handle);
        if (array == nullptr) {
            raise(env, "java/lang/RuntimeException", "qxSetAt failed: NULL array pointer");
        }
        checkImaginaryAccess(env, array, real);
        auto address = addressOf(env, javaAddress);
        const ElementPosition position = address.resolve(array);
        if (array->isSparse()) {
            writeSparse(array, position.sparse, value, real);
        } else {
            writeDense(array, position.index, value, real);
        }
    });
}

/// The same with the value of an object.
template <typename JavaAddress>
void writeElement(JNIEnv* env, jobject handle, JavaAddress javaAddress, const jobject& value, bool real) {
    guarded(env, [&] { writeElement(env, handle, javaAddress, JObjectProxy(env, value), real); });
}

}  // namespace nativevrl
