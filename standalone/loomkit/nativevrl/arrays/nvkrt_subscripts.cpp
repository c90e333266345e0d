/// Natives that turn subscripts, which count from 1, into positions in storage, which count from 0.

#include "arrays/elementaddress.h"
#include "arrays/structsubscripts.h"
#include "arrays/subscriptrun.h"
#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "proxies/jstringproxy.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

namespace {

/// Raises java.lang.NullPointerException for an argument that Java left null.
jint refuseNull(JNIEnv* env, const char* message) {
    tether::throwNamedException(env, "java/lang/NullPointerException", message);
    return 0;
}

const qxArray* openForSubscripts(JNIEnv* env, jobject handle, const char* exceptionClass) {
    const qxArray* array = openHandle(env, handle);
    if (array == nullptr) {
        raise<tether::ArrayIndexOutOfBoundsException>(env, exceptionClass, "Attempt to index into an empty array");
    }
    return array;
}

const qxArray* openForSubscripts(JNIEnv* env, jobject handle) {
    return openForSubscripts(env, handle, "java/lang/ArrayIndexOutOfBoundsException");
}

}  // namespace

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcSingleSubscript(JNIEnv* env, jclass, jobject handle,
                                                                           jintArray subscripts) {
    return overflowGuarded<jint>(env, -1, [&] {
        if (subscripts == nullptr) {
            return refuseNull(env, "null index array");
        }
        const qxArray* array = openForSubscripts(env, handle);
        return toJavaInt(env, SubscriptAddress(env, subscripts).resolveIndex(array));
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcStructSingleSubscript__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I(
    JNIEnv* env, jclass, jobject handle, jintArray fieldAndSubscripts) {
    return subscriptGuarded<jint>(env, 0, [&] {
        if (fieldAndSubscripts == nullptr) {
            return refuseNull(env, "null index array");
        }
        const qxArray* array = openForSubscripts(env, handle);
        PinnedElements<jint> pinned(env, fieldAndSubscripts);
        return toJavaInt(env, structSubscript(env, array, pinned));
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcStructSingleSubscript__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2Ljava_lang_String_2_3I(
    JNIEnv* env, jclass, jobject handle, jstring field, jintArray subscripts) {
    return subscriptGuarded<jint>(env, 0, [&] {
        if (subscripts == nullptr) {
            return refuseNull(env, "null index array");
        }
        if (field == nullptr) {
            return refuseNull(env, "null field name");
        }
        const qxArray* array = openForSubscripts(env, handle);
        JStringProxy name(env, field);
        PinnedElements<jint> pinned(env, subscripts);
        return toJavaInt(env, structSubscript(env, array, name, pinned));
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcStructSingleSubscript__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2Ljava_lang_String_2I(
    JNIEnv* env, jclass, jobject handle, jstring field, jint index) {
    return subscriptGuarded<jint>(env, 0, [&] {
        if (field == nullptr) {
            return refuseNull(env, "null field name");
        }
        const qxArray* array = openForSubscripts(env, handle, "java/lang/IndexOutOfBoundsException");
        JStringProxy name(env, field);
        return toJavaInt(env, structSubscript(env, array, name, index));
    });
}

jintArray Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetIndexArray(JNIEnv* env, jclass, jobject handle,
                                                                          jint dimension) {
    return guarded<jintArray>(env, nullptr, [&] { return subscriptRun(env, openHandle(env, handle), dimension); });
}
