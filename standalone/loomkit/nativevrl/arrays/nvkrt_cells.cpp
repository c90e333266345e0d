/// Natives that read and replace what cell and struct arrays hold. Neither takes a handle of address 0.

#include "arrays/slots.h"
#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "toarray/jconvert.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

namespace {

/// A new array from a Java object, its class and complexity derived, in the free scope. Raises
/// java.lang.OutOfMemoryError when it can't be made.
qxArrayOwner elementFromJava(JNIEnv* env, jobject value) {
    qxArrayOwner element(JConvert::convertObjectPair(env, JObjectProxy(env, value), JObjectProxy(env, nullptr),
                                                     qxUNKNOWN_CLASS, qxREAL));
    if (!element) {
        tether::throwOutOfMemory(env);
    }
    freeForJava(element.get());
    return element;
}

/// The old element ends only once the new one is there. One that holds the array itself is stored as a copy, which
/// raises java.lang.OutOfMemoryError when it can't be made.
void replaceSlot(JNIEnv* env, qxArray* array, std::size_t slot, qxArrayOwner element) {
    qxArrayOwner storable(qxWithoutCycle(array, element.release()));
    if (!storable) {
        tether::throwOutOfMemory(env);
    }
    qxDestroyArray(qxGetCell(array, slot));
    qxSetCell(array, slot, storable.release());
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetCell(JNIEnv* env, jclass, jobject handle, jint index) {
    return guarded<jobject>(nullptr, [&] {
        const qxArray* array = openHandle(env, handle);
        checkSlot(env, array, index);
        return wrapSlot(env, array, static_cast<std::size_t>(index));
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetCell(JNIEnv* env, jclass, jobject handle, jint index,
                                                               jobject value) {
    guarded([&] {
        qxArray* array = openHandle(env, handle);
        checkSlot(env, array, index);
        replaceSlot(env, array, static_cast<std::size_t>(index), elementFromJava(env, value));
    });
}
