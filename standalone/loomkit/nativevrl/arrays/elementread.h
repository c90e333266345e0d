#pragma once

#include "arrays/elementaddress.h"
#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "layout/elementclass.h"
#include "layout/refuseclass.h"
#include "proxies/numericcast.h"

namespace nativevrl {

/// One element as a Java primitive: loaded as its class is stored, the unsigned integer classes as the signed type of
/// their width, then cast plainly.
template <typename T>
T loadElement(const qxArray* array, std::size_t dataIndex, bool real) {
    const qxClassID classId = classIdOf(array);
    return visitElementClass(
        classId,
        [&](auto one) {
            using E = typename decltype(one)::Java;
            return castElement<T>(static_cast<const E*>(partOf(array, real))[dataIndex]);
        },
        [classId]() -> T { refuseClass(classId, PrimitiveVisitor::data); });
}

/// The natives that read one element as a primitive, from a jint index or a jintArray of subscripts. A gap of a
/// sparse array reads as zero.
template <typename T, typename JavaAddress>
T readElement(JNIEnv* env, jobject handle, JavaAddress javaAddress, bool real) {
    return subscriptGuarded(env, T{}, [&]() -> T {
        const qxArray* array = openHandle(env, handle);
        if (array == nullptr) {
            raise(env, "java/lang/RuntimeException", "qxGet<TYPE>At failed: NULL array pointer");
        }
        checkImaginaryAccess(env, array, real);
        auto address = addressOf(env, javaAddress);
        const std::optional<std::size_t> dataIndex = findData(env, array, address.resolve(array));
        return dataIndex ? loadElement<T>(array, *dataIndex, real) : T{};
    });
}

}  // namespace nativevrl
