/// Natives that move a whole part of an array in storage order.

#include "arrays/slots.h"
#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "layout/visitclass.h"
#include "proxies/javalength.h"
#include "proxies/jnvarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"
#include "toarray/flatstore.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

namespace {

/// NVArray[] over shared copies of the first `count` slots.
jobject wrapSlots(JNIEnv* env, const qxArray* array, std::size_t count) {
    NewJObjectArrayProxy<JNVArrayProxy> wrappers(env, javaLength(env, count));
    for (jsize slot = 0; static_cast<std::size_t>(slot) < count; ++slot) {
        JObjectRef wrapper(env, nullptr);
        wrapper.attach(wrapSlot(env, array, static_cast<std::size_t>(slot)));
        wrappers.set(slot, wrapper.ref());
    }
    return wrappers.detach();
}

/// The stored run of one part as a new Java array; only the stored values of a sparse array.
jobject copyStoredRun(JNIEnv* env, const qxArray* array, bool real) {
    const void* data = partOf(array, real);
    const std::size_t count = storedElementCount(array);
    if (count != 0 && data == nullptr) {
        raise<tether::NullPointerException>(env, "java/lang/NullPointerException", "qxArray data is NULL");
    }
    const qxClassID classId = classIdOf(array);
    if (classId == qxCELL_CLASS || classId == qxSTRUCT_CLASS || classId == qxFUNCTION_CLASS) {
        return wrapSlots(env, array, count);
    }
    return visitClass(
        classId,
        [&](auto element) -> jobject {
            using E = ElementOf<decltype(element)>;
            const E* begin = static_cast<const E*>(data);
            return NewJPrimitiveArrayProxy<E>(env, begin, begin + count).detach();
        },
        [env](qxClassID) -> jobject {
            raise(env, "java/lang/UnsupportedOperationException",
                  "Can not convert the given TAVRIX array type to a Java type.");
        });
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetData(JNIEnv* env, jclass, jobject handle, jboolean real) {
    return guarded<jobject>(nullptr, [&] {
        const bool isReal = real != JNI_FALSE;
        const qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, isReal);
        return array == nullptr ? nullptr : copyStoredRun(env, array, isReal);
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetData(JNIEnv* env, jclass, jobject handle, jobject data,
                                                               jboolean real) {
    guarded([&] {
        const bool isReal = real != JNI_FALSE;
        qxArray* array = openHandle(env, handle);
        checkImaginaryAccess(env, array, isReal);
        JConvert::setPartData(env, array, JObjectProxy(env, data), isReal);
    });
}
