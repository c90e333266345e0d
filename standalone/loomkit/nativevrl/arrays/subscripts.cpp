#include "arrays/subscripts.h"

#include "boundary/castguard.h"

namespace nativevrl {

namespace {

void checkSubscriptCount(JNIEnv* env, std::uint32_t dimensionCount, std::size_t length) {
    if (dimensionCount == 0) {
        refuseIndex(env, "Attempt to index into an empty array");
    }
    if (length != dimensionCount) {
        refuseIndex(env, "Incompatible number of dimensions");
    }
}

template <typename Subscript>
bool areInRange(const std::uint32_t* extents, std::uint32_t dimensionCount, const Subscript* subscripts) {
    for (std::uint32_t i = 0; i < dimensionCount; ++i) {
        // A negative subscript fails the cast.
        const auto subscript = boost::numeric_cast<std::uint32_t>(subscripts[i]);
        if (subscript < 1 || subscript > extents[i]) {
            return false;
        }
    }
    return true;
}

template <typename Subscript>
void checkSubscriptRange(JNIEnv* env, const std::uint32_t* extents, std::uint32_t dimensionCount,
                         const Subscript* subscripts) {
    constexpr const char* message = "Dimensions out of range";
    const bool inRange = castGuarded<tether::ArrayIndexOutOfBoundsException>(
        env, "java/lang/ArrayIndexOutOfBoundsException", message,
        [&] { return areInRange(extents, dimensionCount, subscripts); });
    if (!inRange) {
        refuseIndex(env, message);
    }
}

}  // namespace

void refuseIndex(JNIEnv* env, const char* message) {
    raise<tether::ArrayIndexOutOfBoundsException>(env, "java/lang/ArrayIndexOutOfBoundsException", message);
}

void checkSubscripts(JNIEnv* env, const std::uint32_t* extents, std::uint32_t dimensionCount,
                     PinnedElements<jint>& subscripts, jsize length) {
    checkSubscriptCount(env, dimensionCount, static_cast<std::size_t>(length));
    checkSubscriptRange(env, extents, dimensionCount, subscripts.elements());
}

template <typename Subscript>
void checkSubscripts(JNIEnv* env, const std::uint32_t* extents, std::uint32_t dimensionCount,
                     const Subscript* subscripts, std::size_t length) {
    checkSubscriptCount(env, dimensionCount, length);
    checkSubscriptRange(env, extents, dimensionCount, subscripts);
}

template void checkSubscripts(JNIEnv*, const std::uint32_t*, std::uint32_t, const jint*, std::size_t);
template void checkSubscripts(JNIEnv*, const std::uint32_t*, std::uint32_t, const unsigned*, std::size_t);

void checkIndex(JNIEnv* env, std::int64_t index, std::size_t count) {
    if (index < 0 || static_cast<std::uint64_t>(index) >= count) {
        refuseIndex(env, "Index out of bounds");
    }
}

void checkLinearIndex(JNIEnv* env, const qxArray* array, std::int64_t index) {
    checkIndex(env, index, qxGetNumberOfElements(array));
}

jint toJavaInt(JNIEnv* env, std::size_t value) {
    return castGuarded<tether::ArrayIndexOutOfBoundsException>(env, "java/lang/IndexOutOfBoundsException",
                                                               "TAVRIX index too big to convert to Java int",
                                                               [&] { return boost::numeric_cast<jint>(value); });
}

}  // namespace nativevrl
