#pragma once

#include "qx/arrayowner.h"
#include "support/jvmtest.h"
#include "support/natives.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <type_traits>
#include <vector>

/// The element natives under one name for all Java types, and the arrays that they are tried on.
namespace nativevrl::test {

template <typename T>
struct JavaType {};

/// The type that a JavaType stands for: `decltype(typeOf(javaType))`.
template <typename T>
T typeOf(JavaType<T>);

/// Whether the natives of T name a part; char and boolean go without.
template <typename T>
constexpr bool namesPart = !std::is_same_v<T, jchar> && !std::is_same_v<T, jboolean>;

/// The natives that read and write elements as T, by a linear index and by subscripts.
template <typename T>
struct ElementNatives;

#define LOOMKIT_ELEMENT(Name, T, Code, Part)                                           \
    template <>                                                                        \
    struct ElementNatives<T> {                                                         \
        static constexpr std::tuple get{&NVKRT_OF_HANDLE(qxGet##Name##At, I##Part),    \
                                        &NVKRT_OF_HANDLE(qxGet##Name##At, _3I##Part)}; \
        static constexpr std::tuple set{&NVKRT_OF_HANDLE(qxSetAt, I##Code##Part),      \
                                        &NVKRT_OF_HANDLE(qxSetAt, _3I##Code##Part)};   \
    };
LOOMKIT_ELEMENT(Double, jdouble, D, Z)
LOOMKIT_ELEMENT(Float, jfloat, F, Z)
LOOMKIT_ELEMENT(Long, jlong, J, Z)
LOOMKIT_ELEMENT(Int, jint, I, Z)
LOOMKIT_ELEMENT(Short, jshort, S, Z)
LOOMKIT_ELEMENT(Byte, jbyte, B, Z)
LOOMKIT_ELEMENT(Object, jobject, Ljava_lang_Object_2, Z)
LOOMKIT_ELEMENT(Char, jchar, C, )
LOOMKIT_ELEMENT(Boolean, jboolean, Z, )
#undef LOOMKIT_ELEMENT

template <typename T, typename Address>
T getAt(JavaType<T>, JNIEnv* env, jobject handle, Address address, bool real) {
    const auto get = std::get<std::is_same_v<Address, jintArray>>(ElementNatives<T>::get);
    if constexpr (namesPart<T>) {
        return get(env, nullptr, handle, address, real);
    } else {
        return get(env, nullptr, handle, address);
    }
}

template <typename Address, typename T>
void setAt(JNIEnv* env, jobject handle, Address address, T value, bool real) {
    const auto set = std::get<std::is_same_v<Address, jintArray>>(ElementNatives<T>::set);
    if constexpr (namesPart<T>) {
        set(env, nullptr, handle, address, value, real);
    } else {
        set(env, nullptr, handle, address, value);
    }
}

/// Calls `body` with an object of each type.
template <typename... Types, typename Body>
void forEachType(Body&& body) {
    (body(Types{}), ...);
}

/// Calls `body` with a JavaType for each Java primitive type.
template <typename Body>
void forEachJavaType(Body&& body) {
    forEachType<JavaType<jdouble>, JavaType<jfloat>, JavaType<jlong>, JavaType<jint>, JavaType<jshort>, JavaType<jbyte>,
                JavaType<jchar>, JavaType<jboolean>>(body);
}

/// An array with a handle that Java could hold; it ends with this object.
struct Held {
    Held(JNIEnv* env, qxArray* made) : array(made), handle(newHandle(env, made)) {}

    qxArray* operator->() const { return array.get(); }

    qxArrayOwner array;
    jobject handle;
};

constexpr const char* outOfBounds = "java/lang/ArrayIndexOutOfBoundsException";

/// An array class and the type that its elements are stored as.
template <typename StoredElement, qxClassID classId>
struct ClassCase {
    using Stored = StoredElement;
    static constexpr qxClassID id = classId;

    /// A row of these elements; a complex one has them in both parts.
    static qxArray* row(const std::vector<Stored>& values, qxComplexity complexity = qxREAL) {
        qxArray* array = qxCreateNumericMatrix(1, static_cast<std::uint32_t>(values.size()), id, complexity);
        std::copy(values.begin(), values.end(), part(array, true));
        if (array->imagData() != nullptr) {
            std::copy(values.begin(), values.end(), part(array, false));
        }
        return array;
    }

    static Stored* part(const qxArray* array, bool real) {
        return static_cast<Stored*>(real ? array->realData() : array->imagData());
    }

    /// Where casts go wrong: signs, limits, what lies just beyond them, special values.
    static std::vector<Stored> values() {
        if constexpr (id == qxLOGICAL_CLASS) {
            return {0, 1};
        } else if constexpr (std::is_floating_point_v<Stored>) {
            using Limits = std::numeric_limits<Stored>;
            std::vector<Stored> values = {Limits::max(), Limits::denorm_min(), Limits::infinity(), -Limits::infinity(),
                                          Limits::quiet_NaN()};
            for (const double value :
                 {0.0, -0.0, 1.0, 0.5, -0.5, -1.5, 300.7, 256.0, -32769.9, 65537.2, 2147483647.0, 2147483648.0,
                  -2147483648.9, -2147483649.0, 4294967295.0, 0x1p63 - 1024, 0x1p63, -0x1p63, 1e20}) {
                values.push_back(static_cast<Stored>(value));
            }
            return values;
        } else {
            std::vector<Stored> values = {static_cast<Stored>(200), static_cast<Stored>(~0ULL)};
            for (const int power : {0, 7, 8, 15, 16, 24, 31, 32, 53, 63}) {
                const std::uint64_t bits = 1ULL << power;
                for (const std::uint64_t near : {bits - 1, bits, bits + 1}) {
                    values.push_back(static_cast<Stored>(near));
                }
            }
            return values;
        }
    }
};

/// The signed integer of a width in Java.
template <std::size_t bytes>
using JavaInteger =
    std::conditional_t<bytes == 8, jlong,
                       std::conditional_t<bytes == 4, jint, std::conditional_t<bytes == 2, jshort, jbyte>>>;

/// The Java type that a class takes by itself.
template <typename Case, typename Stored = typename Case::Stored>
using NaturalType = std::conditional_t<
    Case::id == qxLOGICAL_CLASS, jboolean,
    std::conditional_t<Case::id == qxCHAR_CLASS, jchar,
                       std::conditional_t<std::is_floating_point_v<Stored>, Stored, JavaInteger<sizeof(Stored)>>>>;

/// Calls `body` with a ClassCase for each class that has numbers, truth values or text.
template <typename Body>
void forEachClass(Body&& body) {
    forEachType<ClassCase<std::uint8_t, qxLOGICAL_CLASS>, ClassCase<std::uint16_t, qxCHAR_CLASS>,
                ClassCase<double, qxDOUBLE_CLASS>, ClassCase<float, qxSINGLE_CLASS>,
                ClassCase<std::int8_t, qxINT8_CLASS>, ClassCase<std::uint8_t, qxUINT8_CLASS>,
                ClassCase<std::int16_t, qxINT16_CLASS>, ClassCase<std::uint16_t, qxUINT16_CLASS>,
                ClassCase<std::int32_t, qxINT32_CLASS>, ClassCase<std::uint32_t, qxUINT32_CLASS>,
                ClassCase<std::int64_t, qxINT64_CLASS>, ClassCase<std::uint64_t, qxUINT64_CLASS>>(body);
}

/// Equal, or both NaN; zeros of either sign are told apart.
template <typename T>
bool isSame(T first, T second) {
    if constexpr (std::is_floating_point_v<T>) {
        return (first != first && second != second) || (first == second && std::signbit(first) == std::signbit(second));
    } else {
        return first == second;
    }
}

/// The value that truncation toward zero to a signed integer of `bits` bits gives; the lowest where there is none.
inline std::int64_t truncated(double value, int bits) {
    const double limit = std::ldexp(1.0, bits - 1);
    const double whole = std::trunc(value);
    return whole >= -limit && whole < limit ? static_cast<std::int64_t>(whole)
                                            : std::numeric_limits<std::int64_t>::min() >> (64 - bits);
}

/// A plain cast; what has no value in the integer that it passes through gives that one's lowest.
template <typename T, typename S>
T modelCast(S value) {
    if constexpr (std::is_floating_point_v<S> && std::is_integral_v<T>) {
        return static_cast<T>(truncated(static_cast<double>(value), sizeof(T) == 8 ? 64 : 32));
    } else {
        return static_cast<T>(value);
    }
}

}  // namespace nativevrl::test
