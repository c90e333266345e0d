#include "arrays/objectread.h"

#include "arrays/elementaddress.h"
#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "layout/elementclass.h"
#include "proxies/jboxedproxies.h"
#include "tojava/slotwrapper.h"

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
    return visitElementClass(
        classId,
        [env](auto one) -> jobject {
            if constexpr (isNumericClass(decltype(one)::id)) {
                return box(env, typename decltype(one)::Java{});
            } else {
                refuseGap(env);
            }
        },
        [env]() -> jobject { refuseGap(env); });
}

const qxArray* openForObject(JNIEnv* env, jobject handle) {
    const qxArray* array = openHandle(env, handle);
    if (array == nullptr) {
        raise(env, "java/lang/RuntimeException", "qxGetObjectAt - NULL pointer error");
    }
    return array;
}

template <typename JavaAddress>
jobject readObjectAt(JNIEnv* env, jobject handle, JavaAddress javaAddress, bool real) {
    return guarded<jobject>(env, nullptr, [&] {
        const qxArray* array = openForObject(env, handle);
        auto address = addressOf(env, javaAddress);
        checkImaginaryAccess(env, array, real);
        const std::optional<std::size_t> dataIndex = findData(env, array, address.resolve(array));
        return dataIndex ? elementToObject(env, array, *dataIndex, real) : boxedZero(env, classIdOf(array));
    });
}

}  // namespace

jobject elementToObject(JNIEnv* env, const qxArray* array, std::size_t dataIndex, bool real) {
    if (array == nullptr) {
        raise<tether::NullPointerException>(env, "java/lang/NullPointerException", "Null qxArray pointer reference");
    }
    const qxClassID classId = classIdOf(array);
    if (hasSlots(classId)) {
        return wrapSlot(env, qxGetCell(array, dataIndex));
    }
    return visitElementClass(
        classId,
        [&](auto one) {
            using E = typename decltype(one)::Java;
            return box(env, static_cast<const E*>(partOf(array, real))[dataIndex]);
        },
        [env]() -> jobject { raise(env, "java/lang/RuntimeException", "could not convert from array class type"); });
}

jobject readObject(JNIEnv* env, jobject handle, jint index, bool real) {
    return readObjectAt(env, handle, index, real);
}

jobject readObject(JNIEnv* env, jobject handle, jintArray subscripts, bool real) {
    return readObjectAt(env, handle, subscripts, real);
}

}  // namespace nativevrl
