#pragma once

#include "qx/arrayowner.h"
#include "support/jvmtest.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

/// The element natives under one name for all Java types, and the arrays that they are tried on.
namespace nativevrl::test {

template <typename T>
struct JavaType {};

#define LOOMKIT_ELEMENT(Name, Code, T)                                                                                                 \
    inline T getAt(JavaType<T>, JNIEnv* env, jobject handle, jint index, bool real) {                                                  \
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2IZ(   \
            env, nullptr, handle, index, real);                                                                                        \
    }                                                                                                                                  \
    inline T getAt(JavaType<T>, JNIEnv* env, jobject handle, jintArray subscripts, bool real) {                                        \
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3IZ( \
            env, nullptr, handle, subscripts, real);                                                                                   \
    }                                                                                                                                  \
    inline void setAt(JNIEnv* env, jobject handle, jint index, T value, bool real) {                                                   \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2I##Code##Z(          \
            env, nullptr, handle, index, value, real);                                                                                 \
    }                                                                                                                                  \
    inline void setAt(JNIEnv* env, jobject handle, jintArray subscripts, T value, bool real) {                                         \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I##Code##Z(        \
            env, nullptr, handle, subscripts, value, real);                                                                            \
    }
LOOMKIT_ELEMENT(Double, D, jdouble)
LOOMKIT_ELEMENT(Float, F, jfloat)
LOOMKIT_ELEMENT(Long, J, jlong)
LOOMKIT_ELEMENT(Int, I, jint)
LOOMKIT_ELEMENT(Short, S, jshort)
LOOMKIT_ELEMENT(Byte, B, jbyte)
LOOMKIT_ELEMENT(Object, Ljava_lang_Object_2, jobject)
#undef LOOMKIT_ELEMENT

// char and boolean go without a part: these forms leave it out.
#define LOOMKIT_ELEMENT_REAL(Name, Code, T)                                                                                           \
    inline T getAt(JavaType<T>, JNIEnv* env, jobject handle, jint index, bool) {                                                      \
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2I(   \
            env, nullptr, handle, index);                                                                                             \
    }                                                                                                                                 \
    inline T getAt(JavaType<T>, JNIEnv* env, jobject handle, jintArray subscripts, bool) {                                            \
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGet##Name##At__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I( \
            env, nullptr, handle, subscripts);                                                                                        \
    }                                                                                                                                 \
    inline void setAt(JNIEnv* env, jobject handle, jint index, T value, bool) {                                                       \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2I##Code(            \
            env, nullptr, handle, index, value);                                                                                      \
    }                                                                                                                                 \
    inline void setAt(JNIEnv* env, jobject handle, jintArray subscripts, T value, bool) {                                             \
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSetAt__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I##Code(          \
            env, nullptr, handle, subscripts, value);                                                                                 \
    }
LOOMKIT_ELEMENT_REAL(Char, C, jchar)
LOOMKIT_ELEMENT_REAL(Boolean, Z, jboolean)
#undef LOOMKIT_ELEMENT_REAL

/// Whether the natives of T name a part.
template <typename T>
constexpr bool namesPart = !std::is_same_v<T, jchar> && !std::is_same_v<T, jboolean>;

/// Calls `body` with a JavaType for each Java primitive type.
template <typename Body>
void forEachJavaType(Body&& body) {
    body(JavaType<jdouble>{});
    body(JavaType<jfloat>{});
    body(JavaType<jlong>{});
    body(JavaType<jint>{});
    body(JavaType<jshort>{});
    body(JavaType<jbyte>{});
    body(JavaType<jchar>{});
    body(JavaType<jboolean>{});
}

/// An array with a handle that Java could hold; it ends with this object.
struct Held {
    Held(JNIEnv* env, qxArray* made) : array(made), handle(newHandle(env, made)) {}

    qxArray* operator->() const { return array.get(); }

    qxArrayOwner array;
    jobject handle;
};

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

/// The Java type that a class takes by itself.
template <typename Case>
using NaturalType = std::conditional_t<
    Case::id == qxLOGICAL_CLASS, jboolean,
    std::conditional_t<
        Case::id == qxCHAR_CLASS, jchar,
        std::conditional_t<std::is_floating_point_v<typename Case::Stored>, typename Case::Stored,
                           std::conditional_t<sizeof(typename Case::Stored) == 1, jbyte,
                                              std::conditional_t<sizeof(typename Case::Stored) == 2, jshort,
                                                                 std::conditional_t<sizeof(typename Case::Stored) == 4,
                                                                                    jint, jlong>>>>>>;

/// Calls `body` with a ClassCase for each class that has numbers, truth values or text.
template <typename Body>
void forEachClass(Body&& body) {
    body(ClassCase<std::uint8_t, qxLOGICAL_CLASS>{});
    body(ClassCase<std::uint16_t, qxCHAR_CLASS>{});
    body(ClassCase<double, qxDOUBLE_CLASS>{});
    body(ClassCase<float, qxSINGLE_CLASS>{});
    body(ClassCase<std::int8_t, qxINT8_CLASS>{});
    body(ClassCase<std::uint8_t, qxUINT8_CLASS>{});
    body(ClassCase<std::int16_t, qxINT16_CLASS>{});
    body(ClassCase<std::uint16_t, qxUINT16_CLASS>{});
    body(ClassCase<std::int32_t, qxINT32_CLASS>{});
    body(ClassCase<std::uint32_t, qxUINT32_CLASS>{});
    body(ClassCase<std::int64_t, qxINT64_CLASS>{});
    body(ClassCase<std::uint64_t, qxUINT64_CLASS>{});
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
