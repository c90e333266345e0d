/// Natives that turn arrays into bytes and back, and those that compare and hash arrays by these bytes.

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "proxies/invariant.h"
#include "proxies/jarrayproxy.h"
#include "qx/arrayowner.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <cstring>

using namespace nativevrl;

namespace {

/// Whether there is nothing to serialise: no array, or one of unknown class.
bool hasNoForm(const qxArray* array) { return array == nullptr || classIdOf(array) == qxUNKNOWN_CLASS; }

/// Hands the bytes of a serialised array to Java and ends the array. It stays alive when there is no room for the
/// byte[].
jbyteArray toByteArray(JNIEnv* env, qxArray* serialised) {
    const auto* begin = static_cast<const jbyte*>(serialised->realData());
    NewJPrimitiveArrayProxy<jbyte> bytes(env, begin, begin + qxGetN(serialised));
    qxDestroyArray(serialised);
    return static_cast<jbyteArray>(bytes.detach());
}

jbyteArray serialise(JNIEnv* env, const qxArray* array) {
    qxArray* serialised = hasNoForm(array) ? nullptr : qxSerialize(array);
    if (serialised == nullptr) {
        return static_cast<jbyteArray>(NewJPrimitiveArrayProxy<jbyte>(env, 0).detach());
    }
    stateInvariant(serialised != nullptr, "NULL != px", __FILE__, __LINE__);
    return toByteArray(env, serialised);
}

/// The array behind bytes from Java; no byte at all gives an empty array of unknown class. Bytes that are refused end
/// in a bare tether::Exception, with no Java exception.
qxArrayOwner deserialise(JPrimitiveArrayProxy<jbyte>& bytes) {
    const jsize length = bytes.length();
    if (length == 0) {
        return qxArrayOwner(qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL));
    }
    qxArrayOwner array(qxDeserialize(bytes.getElements(), static_cast<std::size_t>(length)));
    if (!array) {
        throw tether::Exception();
    }
    return array;
}

int signOf(int difference) { return (difference > 0) - (difference < 0); }

/// The shorter form is less; forms of one length compare as unsigned bytes.
int compareForms(const qxArray* first, const qxArray* second) {
    const std::size_t firstLength = qxGetN(first);
    const std::size_t secondLength = qxGetN(second);
    if (firstLength != secondLength) {
        return firstLength < secondLength ? -1 : 1;
    }
    return signOf(std::memcmp(first->realData(), second->realData(), firstLength));
}

/// Null before unknown class before all others, which compare by their serialised forms. One that has no form is
/// less than what it is compared with, if it comes first, or else greater.
int compareArrays(JNIEnv* env, jobject firstHandle, jobject secondHandle) {
    const qxArray* first = openHandle(env, firstHandle);
    const qxArray* second = openHandle(env, secondHandle);
    if (first == nullptr) {
        return second != nullptr ? -1 : 0;
    }
    if (second == nullptr) {
        return 1;
    }
    if (classIdOf(first) == qxUNKNOWN_CLASS) {
        return classIdOf(second) != qxUNKNOWN_CLASS ? -1 : 0;
    }
    if (classIdOf(second) == qxUNKNOWN_CLASS) {
        return 1;
    }
    const qxArrayOwner firstForm(qxSerialize(first));
    if (!firstForm) {
        return -1;
    }
    const qxArrayOwner secondForm(qxSerialize(second));
    if (!secondForm) {
        return 1;
    }
    return compareForms(firstForm.get(), secondForm.get());
}

jint hashOf(const qxArray* array) {
    const qxArrayOwner form(hasNoForm(array) ? nullptr : qxSerialize(array));
    return form ? static_cast<jint>(vrlHashNBytes(0, qxGetN(form.get()), form->realData())) : 0;
}

}  // namespace

jbyteArray Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSerialize(JNIEnv* env, jclass, jobject handle) {
    return guarded<jbyteArray>(env, nullptr, [&] { return serialise(env, openHandle(env, handle)); });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDeserialize(JNIEnv* env, jclass, jbyteArray bytes) {
    return guarded<jobject>(env, nullptr, [&]() -> jobject {
        if (bytes == nullptr) {
            return nullptr;
        }
        JPrimitiveArrayProxy<jbyte> pinned(env, bytes);
        return handOver(env, deserialise(pinned));
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCompareArray(JNIEnv* env, jclass, jobject first,
                                                                    jobject second) {
    return guarded<jint>(env, 0, [&] { return compareArrays(env, first, second); });
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsIdentical(JNIEnv* env, jclass, jobject first,
                                                                       jobject second) {
    return guarded<jboolean>(env, JNI_FALSE, [&]() -> jboolean {
        if (first == nullptr || second == nullptr) {
            return first == second;
        }
        return compareArrays(env, first, second) == 0;
    });
}

jint Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetHashValue(JNIEnv* env, jclass, jobject handle) {
    return guarded<jint>(env, 0, [&] { return hashOf(openHandle(env, handle)); });
}
