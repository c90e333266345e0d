#include "tojava/wholearray.h"

namespace nativevrl {

namespace {

/// A struct array without fields has elements and no slot for any of them.
bool hasNoSlots(const qxArray* array) {
    return classIdOf(array) == qxSTRUCT_CLASS && array->get_number_of_struct_fields() == 0;
}

}  // namespace

const void* requirePart(JNIEnv* env, const qxArray* array, bool real) {
    const void* data = partOf(array, real);
    if ((data == nullptr || hasNoSlots(array)) && storedElementCount(array) != 0) {
        raise<tether::NullPointerException>(env, "java/lang/NullPointerException", "qxArray data is NULL");
    }
    return data;
}

std::vector<unsigned> dimensionsOf(const qxArray* array) {
    return {array->get_dimensions(), array->get_dimensions() + array->numberOfDimensions()};
}

}  // namespace nativevrl
