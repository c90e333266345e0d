/// Natives that read and replace what cell and struct arrays hold. Neither takes a handle of address 0.

#include "arrays/subscripts.h"
#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "toarray/jconvert.h"
#include "tojava/slotwrapper.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

namespace {

/// An index from 0 that must name a slot: of a struct or object array one of the elements' fields, of any other an
/// element. Raises java.lang.ArrayIndexOutOfBoundsException.
void checkSlot(JNIEnv* env, const qxArray* array, jint index) {
    const std::uint32_t classWord = array->classWord();
    const bool hasFields = classWord == qxSTRUCT_CLASS || classWord == qxOBJECT_CLASS;
    const std::size_t elements = qxGetNumberOfElements(array);
    checkIndex(env, index, hasFields ? elements * array->get_number_of_struct_fields() : elements);
}

/// Raises java.lang.IllegalArgumentException.
void requireSlots(JNIEnv* env, const qxArray* array) {
    if (!hasSlots(classIdOf(array))) {
        raise<tether::IllegalArgumentException>(env, "java/lang/IllegalArgumentException",
                                                "The array has no cells or fields.");
    }
}

/// A new array from a Java object, its class and complexity derived, in the free scope. Raises
/// java.lang.OutOfMemoryError when it can't be made.
qxArrayOwner elementFromJava(JNIEnv* env, jobject value) {
    qxArrayOwner element =
        JConvert::convertObjectPair(env, JObjectProxy(env, value), JObjectProxy(env, nullptr), qxUNKNOWN_CLASS, qxREAL);
    if (!element) {
        tether::throwOutOfMemory(env);
    }
    setFreeScope(element.get());
    return element;
}

/// The old element ends only once the new one is there. One that holds the array itself is stored as a copy, which
/// raises java.lang.OutOfMemoryError when it can't be made.
void replaceSlot(JNIEnv* env, qxArray* array, std::size_t slot, qxArrayOwner element) {
    qxArray* replaced = nullptr;
    if (!qxReplaceCell(array, slot, element.release(), &replaced)) {
        tether::throwOutOfMemory(env);
    }
    qxDestroyArray(replaced);
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetCell(JNIEnv* env, jclass, jobject handle, jint index) {
    return guarded<jobject>(env, nullptr, [&] {
        const qxArray* array = openHandle(env, handle);
        checkSlot(env, array, index);
        return wrapSlot(env, qxGetCell(array, static_cast<std::size_t>(index)));
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetCell(JNIEnv* env, jclass, jobject handle, jint index,
                                                               jobject value) {
    guarded(env, [&] {
        qxArray* array = openHandle(env, handle);
        checkSlot(env, array, index);
        requireSlots(env, array);
        replaceSlot(env, array, static_cast<std::size_t>(index), elementFromJava(env, value));
    });
}
