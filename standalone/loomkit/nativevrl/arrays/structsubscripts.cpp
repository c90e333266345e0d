#include "arrays/structsubscripts.h"

#include "arrays/subscripts.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"

#include <vector>

namespace nativevrl {

namespace {

/// The sum over the extents with the number of fields in front, for as many subscripts with the field in front.
template <typename Subscript>
unsigned fieldFirstSubscript(const qxArray* array, const Subscript* fieldAndSubscripts) {
    std::vector<unsigned> extents = extentsOf(array);
    extents.insert(extents.begin(), array->get_number_of_struct_fields());
    const MSubscriptToC map;
    return computeSingleSubscript(extents.data(), static_cast<std::uint32_t>(extents.size()), fieldAndSubscripts, map);
}

/// Number of a field from 1; java.lang.IllegalArgumentException where there is none.
unsigned fieldFromOne(JNIEnv* env, const qxArray* array, JStringProxy& field) {
    const int number = qxGetFieldNumber(array, field.getStringUTFChars());
    if (number < 0) {
        raise(env, "java/lang/IllegalArgumentException", "Illegal or non-existent field name");
    }
    return static_cast<unsigned>(number) + 1;
}

bool isFieldOf(const qxArray* array, jint fromOne) {
    return fromOne >= 1 && static_cast<std::uint32_t>(fromOne) <= array->get_number_of_struct_fields();
}

/// One subscript from 1 per dimension of the element at `position`, which counts from 0.
std::vector<unsigned> subscriptsOf(const qxArray* array, unsigned position) {
    const CSubscriptToM map;
    std::vector<unsigned> subscripts;
    for (const LevelExtent& level : buildLevelTable(extentsOf(array), MDimensionNestingOrder())) {
        subscripts.push_back(map.map(position % level.span / level.stride));
    }
    return subscripts;
}

}  // namespace

unsigned structSubscript(JNIEnv* env, const qxArray* array, PinnedElements<jint>& fieldAndSubscripts) {
    const jsize length = fieldAndSubscripts.length();
    if (length < 1 || !isFieldOf(array, fieldAndSubscripts.elements()[0])) {
        refuseIndex(env, "Struct array index out of bounds");
    }
    const jint* values = fieldAndSubscripts.elements();
    checkSubscripts(env, array->get_dimensions(), array->numberOfDimensions(), values + 1,
                    static_cast<std::size_t>(length) - 1);
    return fieldFirstSubscript(array, values);
}

unsigned structSubscript(JNIEnv* env, const qxArray* array, JStringProxy& field, PinnedElements<jint>& subscripts) {
    std::vector<unsigned> values = {fieldFromOne(env, array, field)};
    const jsize length = subscripts.length();
    checkSubscripts(env, array->get_dimensions(), array->numberOfDimensions(), subscripts, length);
    values.insert(values.end(), subscripts.elements(), subscripts.elements() + length);
    return fieldFirstSubscript(array, values.data());
}

unsigned structSubscript(JNIEnv* env, const qxArray* array, JStringProxy& field, jint index) {
    const std::int64_t position = std::int64_t{index} - 1;
    checkLinearIndex(env, array, position);
    std::vector<unsigned> values = {fieldFromOne(env, array, field)};
    const std::vector<unsigned> subscripts = subscriptsOf(array, static_cast<unsigned>(position));
    checkSubscripts(env, array->get_dimensions(), array->numberOfDimensions(), subscripts.data(), subscripts.size());
    values.insert(values.end(), subscripts.begin(), subscripts.end());
    return fieldFirstSubscript(array, values.data());
}

}  // namespace nativevrl
