/// Natives that make an array, copy it and end it by its handle.

#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "proxies/jarrayproxy.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <cstring>

using namespace nativevrl;

namespace {

qxArray* createEmpty(jint classId) {
    switch (classId) {
        case qxCELL_CLASS:
            return qxCreateCellMatrix(0, 0);
        case qxSTRUCT_CLASS:
            return qxCreateStructMatrix(0, 0, 0, nullptr);
        default:
            return qxCreateNumericMatrix(0, 0, static_cast<qxClassID>(classId), qxREAL);
    }
}

/// Destroys the arrays whose addresses are packed in `block`, and zeroes their words. A rest shorter than a word
/// is left alone.
void destroyPacked(jbyte* block, std::size_t bytes) {
    constexpr std::size_t width = sizeof(qxArray*);
    for (std::size_t at = 0; at + width <= bytes; at += width) {
        qxArray* array = nullptr;
        std::memcpy(&array, block + at, width);
        if (array != nullptr) {
            qxDestroyArray(array);
            std::memset(block + at, 0, width);
        }
    }
}

}  // namespace

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDestroyArray___3B(JNIEnv* env, jclass, jbyteArray block) {
    guarded(env, [&] {
        if (block != nullptr) {
            JPrimitiveArrayProxy<jbyte> bytes(env, block);
            jbyte* elements = bytes.getElements();
            destroyPacked(elements, static_cast<std::size_t>(bytes.length()));
        }
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDestroyArray__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2(
    JNIEnv* env, jclass, jobject handle) {
    guarded(env, [&] { const qxArrayOwner ended(openHandle(env, handle)); });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateEmptyArray(JNIEnv* env, jclass, jint classId) {
    return guarded<jobject>(env, nullptr, [&] { return handOver(env, qxArrayOwner(createEmpty(classId))); });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateSharedCopy(JNIEnv* env, jclass, jobject handle) {
    return guarded<jobject>(env, nullptr, [&] {
        const qxArray* source = openHandle(env, handle);
        return handOver(env, qxArrayOwner(source == nullptr ? nullptr : qxCreateSharedDataCopy(source)));
    });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDuplicateArray(JNIEnv* env, jclass, jobject handle) {
    return guarded<jobject>(env, nullptr, [&]() -> jobject {
        if (handle == nullptr) {
            return nullptr;
        }
        // Its scope stays as the array library made it.
        return makeHandle(env, qxArrayOwner(qxDuplicateArray(openHandle(env, handle))));
    });
}
