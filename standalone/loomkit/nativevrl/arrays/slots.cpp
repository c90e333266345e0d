#include "arrays/slots.h"

#include "arrays/subscripts.h"
#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "proxies/jnvarrayproxy.h"

namespace nativevrl {

namespace {

void checkStructSlot(JNIEnv* env, const qxArray* array, jint index) {
    const std::size_t slots = qxGetNumberOfElements(array) * array->get_number_of_struct_fields();
    if (index < 0 || static_cast<std::size_t>(index) >= slots) {
        raise<tether::ArrayIndexOutOfBoundsException>(env, "java/lang/ArrayIndexOutOfBoundsException",
                                                      "Index out of bounds");
    }
}

}  // namespace

qxArrayOwner shareSlot(const qxArray* array, std::size_t slot) {
    const qxArray* element = qxGetCell(array, slot);
    return qxArrayOwner(
        freeForJava(element == nullptr ? qxCreateDoubleMatrix(0, 0, qxREAL) : qxCreateSharedDataCopy(element)));
}

jobject wrapSlot(JNIEnv* env, const qxArray* array, std::size_t slot) {
    qxArrayOwner element = shareSlot(array, slot);
    NewJNVArrayProxy wrapper(env, element.get());
    static_cast<void>(element.release());  // the wrapper has it now
    return wrapper.detach();
}

void checkSlot(JNIEnv* env, const qxArray* array, jint index) {
    const std::uint32_t classWord = array->classWord();
    if (classWord == qxSTRUCT_CLASS || classWord == qxOBJECT_CLASS) {
        checkStructSlot(env, array, index);
    } else {
        checkLinearIndex(env, array, index);
    }
}

}  // namespace nativevrl
