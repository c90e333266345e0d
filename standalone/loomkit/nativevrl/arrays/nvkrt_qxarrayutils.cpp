/// Natives that tell Java what an array is. Each answers a handle of address 0 with its own neutral value.

#include "arrays/subscripts.h"
#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "boundary/castguard.h"
#include "layout/sparsecolumns.h"
#include "proxies/javalength.h"
#include "proxies/jobjectarrayproxy.h"
#include "proxies/jstringproxy.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <algorithm>

using namespace nativevrl;

namespace {

/// The answer of `ask` about the array in a handle, or `ofNull`.
template <typename Result, typename Ask>
Result query(JNIEnv* env, jobject handle, Result ofNull, Ask&& ask) {
    return guarded(env, Result{}, [&]() -> Result {
        const qxArray* array = openHandle(env, handle);
        return array == nullptr ? ofNull : ask(array);
    });
}

/// A size that must fit into a Java int.
template <typename Ask>
jint queryInt(JNIEnv* env, jobject handle, jint ofNull, Ask&& ask) {
    return query(env, handle, ofNull, [&](const qxArray* array) { return toJavaInt(env, ask(array)); });
}

template <typename Ask>
jboolean queryBoolean(JNIEnv* env, jobject handle, bool ofNull, Ask&& ask) {
    return query(env, handle, static_cast<jboolean>(ofNull),
                 [&](const qxArray* array) { return static_cast<jboolean>(ask(array) ? JNI_TRUE : JNI_FALSE); });
}

/// Elements that Java counts as stored: all of a dense array, zeros too.
std::size_t numberOfNonZeros(const qxArray* array) {
    if (!array->isSparse()) {
        return qxGetNumberOfElements(array);
    }
    const qxClassID classId = classIdOf(array);
    return classId == qxLOGICAL_CLASS || classId == qxDOUBLE_CLASS ? SparseColumns::of(array).count() : 0;
}

jintArray extentsForJava(JNIEnv* env, const qxArray* array) {
    const std::uint32_t* extents = array == nullptr ? nullptr : array->get_dimensions();
    const std::size_t count = extents == nullptr ? 0 : array->numberOfDimensions();
    NewJPrimitiveArrayProxy<jint> result(env, count);
    if (count != 0) {
        std::transform(extents, extents + count, result.getElements(), boost::numeric_cast<jint, std::uint32_t>);
    }
    return static_cast<jintArray>(result.detach());
}

/// -1 where there is no struct or no name to look for. An unknown name of a struct fails as a size beyond Java.
jint fieldNumber(JNIEnv* env, const qxArray* array, JStringProxy& name) {
    const char* chars = array == nullptr ? nullptr : name.getStringUTFChars();
    if (chars == nullptr || classIdOf(array) != qxSTRUCT_CLASS) {
        return -1;
    }
    return toJavaInt(env, static_cast<std::uint32_t>(qxGetFieldNumber(array, chars)));
}

jobjectArray fieldNames(JNIEnv* env, const qxArray* array) {
    const std::uint32_t count = array == nullptr ? 0 : array->get_number_of_struct_fields();
    NewJObjectArrayProxy<JStringProxy> names(env, javaLength(env, count));
    for (std::uint32_t number = 0; number < count; ++number) {
        if (const char* name = array->get_struct_field_name_by_number(number); name != nullptr) {
            const jint slot = castGuarded(env, nvExceptionClass, "Field index overflow",
                                          [&] { return boost::numeric_cast<jint>(number); });
            names.set(slot, NewJStringProxy(env, name).ref());
        }
    }
    return static_cast<jobjectArray>(names.detach());
}

/// Bytes of an element as Java counts them; 0 for what is no class, and for function handles.
unsigned elementSize(jint classId) {
    switch (classId) {
        case qxLOGICAL_CLASS:
        case qxINT8_CLASS:
        case qxUINT8_CLASS:
            return 1;
        case qxCHAR_CLASS:
        case qxINT16_CLASS:
        case qxUINT16_CLASS:
            return 2;
        case qxCELL_CLASS:
        case qxSTRUCT_CLASS:
        case qxSINGLE_CLASS:
        case qxINT32_CLASS:
        case qxUINT32_CLASS:
        case qxOPAQUE_CLASS:
        case qxOBJECT_CLASS:
            return 4;
        case qxDOUBLE_CLASS:
        case qxINT64_CLASS:
        case qxUINT64_CLASS:
            return 8;
        default:
            return 0;
    }
}

}  // namespace

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetClassID(JNIEnv* env, jclass, jobject handle) {
    return query<jint>(env, handle, qxDOUBLE_CLASS, classIdOf);
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetNumberOfDimensions(JNIEnv* env, jclass, jobject handle) {
    return queryInt(env, handle, 0, [](const qxArray* array) { return array->numberOfDimensions(); });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetNumberOfElements(JNIEnv* env, jclass, jobject handle) {
    return queryInt(env, handle, 0, qxGetNumberOfElements);
}

jintArray Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetDimensions(JNIEnv* env, jclass, jobject handle) {
    return guarded<jintArray>(env, nullptr, [&] { return extentsForJava(env, openHandle(env, handle)); });
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsSparse(JNIEnv* env, jclass, jobject handle) {
    return queryBoolean(env, handle, false, [](const qxArray* array) { return array->isSparse(); });
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsComplex(JNIEnv* env, jclass, jobject handle) {
    return queryBoolean(env, handle, false, isComplex);
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsEmpty(JNIEnv* env, jclass, jobject handle) {
    return queryBoolean(env, handle, true, qxIsEmpty);
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetNumberOfNonZeros(JNIEnv* env, jclass, jobject handle) {
    return queryInt(env, handle, 0, numberOfNonZeros);
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetAllocatedNonZeros(JNIEnv* env, jclass, jobject handle) {
    return queryInt(env, handle, 0, [](const qxArray* array) {
        return array->isSparse() ? array->capacity() : qxGetNumberOfElements(array);
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetNumberOfFields(JNIEnv* env, jclass, jobject handle) {
    return queryInt(env, handle, 0, [](const qxArray* array) {
        return classIdOf(array) == qxSTRUCT_CLASS ? array->get_number_of_struct_fields() : 0;
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetFieldNumber(JNIEnv* env, jclass, jobject handle,
                                                                      jstring name) {
    return guarded<jint>(env, 0, [&] {
        const qxArray* array = openHandle(env, handle);
        JStringProxy text(env, name);
        return fieldNumber(env, array, text);
    });
}

jobjectArray Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetFieldNames(JNIEnv* env, jclass, jobject handle) {
    return guarded<jobjectArray>(env, nullptr, [&] { return fieldNames(env, openHandle(env, handle)); });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetElementSize(JNIEnv* env, jclass, jint classId) {
    return guarded<jint>(env, 0, [&] {
        return castGuarded(env, nvExceptionClass, "Element size is too big to fit inside Java int",
                           [&] { return boost::numeric_cast<jint>(elementSize(classId)); });
    });
}
