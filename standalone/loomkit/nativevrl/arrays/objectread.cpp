#include "arrays/objectread.h"

#include "arrays/elementaddress.h"
#include "arrays/slots.h"
#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "layout/visitclass.h"
#include "proxies/jboxedproxies.h"

#include <type_traits>

namespace nativevrl {

namespace {

template <typename T>
jobject box(JNIEnv* env, T value) {
    return NewJBoxedProxy<T>(env, value).detach();
}

[[noreturn]] void refuseGap(JNIEnv* env) {
    raise(env, "java/lang/IllegalArgumentException",
          "The numeric value specified can not be converted to the required type.");
}

/// What a gap of a sparse array reads as: a zero in the box of a numeric class. Logical and char have none.
jobject boxedZero(JNIEnv* env, qxClassID classId) {
    return visitClass(
        classId,
        [env](auto element) -> jobject {
            using E = ElementOf<decltype(element)>;
            if constexpr (std::is_same_v<E, jboolean> || std::is_same_v<E, jchar>) {
                refuseGap(env);
            } else {
                return box(env, E{});
            }
        },
        [env](qxClassID) -> jobject { refuseGap(env); });
}

qxArray* openForObject(JNIEnv* env, jobject handle) {
    qxArray* array = openHandle(env, handle);
    if (array == nullptr) {
        raise(env, "java/lang/RuntimeException", "qxGetObjectAt - NULL pointer error");
    }
    return array;
}

template <typename JavaAddress>
jobject readObjectAt(JNIEnv* env, jobject handle, JavaAddress javaAddress, bool real) {
    return guarded<jobject>(nullptr, [&] {
        qxArray* array = openForObject(env, handle);
        auto address = addressOf(env, javaAddress);
        checkImaginaryAccess(env, array, real);
        address.check(array);
        const std::optional<std::size_t> dataIndex = findData(env, array, address);
        return dataIndex ? elementToObject(env, array, *dataIndex, real) : boxedZero(env, classIdOf(array));
    });
}

}  // namespace

jobject elementToObject(JNIEnv* env, const qxArray* array, std::size_t dataIndex, bool real) {
    if (array == nullptr) {
        raise<tether::NullPointerException>(env, "java/lang/NullPointerException", "Null qxArray pointer reference");
    }
    const qxClassID classId = classIdOf(array);
    if (classId == qxCELL_CLASS || classId == qxSTRUCT_CLASS || classId == qxFUNCTION_CLASS) {
        return wrapSlot(env, array, dataIndex);
    }
    return visitClass(
        classId,
        [&](auto element) -> jobject {
            return box(env, static_cast<const ElementOf<decltype(element)>*>(partOf(array, real))[dataIndex]);
        },
        [env](qxClassID) -> jobject {
            raise(env, "java/lang/RuntimeException", "could not convert from array class type");
        });
}

jobject readObject(JNIEnv* env, jobject handle, jint index, bool real) {
    return readObjectAt(env, handle, index, real);
}

jobject readObject(JNIEnv* env, jobject handle, jintArray subscripts, bool real) {
    return readObjectAt(env, handle, subscripts, real);
}

}  // namespace nativevrl
