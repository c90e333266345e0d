/// Natives that give an array as text.

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "tojava/wholearray.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <string>

using namespace nativevrl;

namespace {

/// A single row of text; the class word alone decides, without the slow query.
bool isTextRow(const qxArray* array) {
    return array->classWord() == qxCHAR_CLASS && array->numberOfDimensions() == 2 && array->get_dimensions()[0] == 1;
}

jobject textRow(JNIEnv* env, const qxArray* array) {
    requirePart(env, array, true);
    const auto* units = static_cast<const jchar*>(array->realData());
    return NewJStringProxy(env, units, units + qxGetN(array)).detach();
}

/// Takes a text of the runtime over, null too.
std::string takeText(char* text) {
    struct End {
        char* text;
        ~End() { vrlcppFreeString(text); }
    } const end{text};
    return text == nullptr ? "" : text;
}

/// What the runtime displays; null, with java.lang.RuntimeException pending, when it can't.
jobject displayed(JNIEnv* env, const qxArray* array) {
    char* buffer = nullptr;
    if (vrlcppArrayToString(array, &buffer) != 0) {
        tether::throwNamedException(env, "java/lang/RuntimeException");
        return nullptr;
    }
    return NewJStringProxy(env, takeText(buffer).c_str()).detach();
}

}  // namespace

jstring Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxArrayToString(JNIEnv* env, jclass, jobject handle) {
    return static_cast<jstring>(guarded<jobject>(env, nullptr, [&]() -> jobject {
        const qxArray* array = openHandle(env, handle);
        if (array == nullptr || qxIsEmpty(array)) {
            return NewJStringProxy(env, "[]").detach();
        }
        return isTextRow(array) ? textRow(env, array) : displayed(env, array);
    }));
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxArrayToStringArray(JNIEnv* env, jclass, jobject handle,
                                                                             jboolean real) {
    return nestedRead<StringLeaf>(env, handle, real);
}

jstring Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetStringData(JNIEnv* env, jclass, jobject handle,
                                                                        jboolean real) {
    return static_cast<jstring>(flatRead<StringLeaf>(env, handle, real));
}
