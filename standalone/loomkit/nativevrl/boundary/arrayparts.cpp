#include "boundary/arrayparts.h"

#include "boundary/boundary.h"

namespace nativevrl {

std::vector<unsigned> extentsOf(const qxArray* array) {
    return {array->get_dimensions(), array->get_dimensions() + array->numberOfDimensions()};
}

void checkImaginaryAccess(JNIEnv* env, const qxArray* array, bool real) {
    if (!real && !isComplex(array)) {
        raise<tether::IllegalArgumentException>(env, "java/lang/IllegalArgumentException",
                                                "Can not get imaginary part of real array");
    }
}

void requirePart(JNIEnv* env, const qxArray* array, bool real) {
    if (partOf(array, real) == nullptr && storedElementCount(array) != 0) {
        raise<tether::NullPointerException>(env, "java/lang/NullPointerException", "qxArray data is NULL");
    }
}

std::size_t storedElementCount(const qxArray* array) {
    if (qxIsEmpty(array)) {
        return 0;
    }
    return array->isSparse() ? array->columnStartTable()[qxGetN(array)] : qxGetNumberOfElements(array);
}

}  // namespace nativevrl
