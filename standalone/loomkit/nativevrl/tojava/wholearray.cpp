#include "tojava/wholearray.h"

namespace nativevrl {

const void* requirePart(JNIEnv* env, const qxArray* array, bool real) {
    const void* data = partOf(array, real);
    if (data == nullptr && storedElementCount(array) != 0) {
        raise<tether::NullPointerException>(env, "java/lang/NullPointerException", "qxArray data is NULL");
    }
    return data;
}

std::vector<unsigned> dimensionsOf(const qxArray* array) {
    return {array->get_dimensions(), array->get_dimensions() + array->numberOfDimensions()};
}

}  // namespace nativevrl
