#pragma once

#include "arrays/natives.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

/// The natives that read whole arrays, under one name for all Java types, and what they should give: a model that knows
/// subscripts and values, but no strides, tiles or JNI.
namespace nativevrl::test {

#define LOOMKIT_READS(Name, Boxed, T)                                                \
    inline jobject readNested(JavaType<T>, JNIEnv* env, jobject handle, bool real) { \
        return NVKRT(qxArrayTo##Name##Array)(env, nullptr, handle, real);            \
    }                                                                                \
    inline jobject readFlat(JavaType<T>, JNIEnv* env, jobject handle, bool real) {   \
        return NVKRT(qxGet##Name##Data)(env, nullptr, handle, real);                 \
    }                                                                                \
    inline jobject readBoxed(JavaType<T>, JNIEnv* env, jobject handle, bool real) {  \
        return NVKRT(qxArrayTo##Boxed##ObjectArray)(env, nullptr, handle, real);     \
    }
LOOMKIT_READS(Boolean, Boolean, jboolean)
LOOMKIT_READS(Byte, Byte, jbyte)
LOOMKIT_READS(Char, Character, jchar)
LOOMKIT_READS(Short, Short, jshort)
LOOMKIT_READS(Int, Integer, jint)
LOOMKIT_READS(Long, Long, jlong)
LOOMKIT_READS(Float, Float, jfloat)
LOOMKIT_READS(Double, Double, jdouble)
#undef LOOMKIT_READS

inline jobject readView(JNIEnv* env, jobject handle, bool real) {
    return NVKRT(qxArray2ObjectArray)(env, nullptr, handle, real);
}
inline jobject readStrings(JNIEnv* env, jobject handle, bool real) {
    return NVKRT(qxArrayToStringArray)(env, nullptr, handle, real);
}
inline jobject readString(JNIEnv* env, jobject handle, bool real) {
    return NVKRT(qxGetStringData)(env, nullptr, handle, real);
}
inline jobject readText(JNIEnv* env, jobject handle) { return NVKRT(qxArrayToString)(env, nullptr, handle); }

using Extents = std::vector<std::uint32_t>;

/// Checks a nested array: its class, its lengths all the way down, and each row by `checkRow(row, index, stride)`,
/// which gets the linear index of the row's first element and the distance to the next.
template <typename CheckRow>
void checkNested(JNIEnv* env, jobject array, const Extents& extents, const std::string& rowClass, CheckRow&& checkRow) {
    const std::function<void(jobject, std::size_t, std::size_t, std::size_t)> descend =
        [&](jobject part, std::size_t level, std::size_t index, std::size_t stride) {
            const std::string expected = std::string(extents.size() - 1 - level, '[') + rowClass;
            ASSERT_EQ(classNameOf(env, part), expected);
            ASSERT_EQ(lengthOf(env, part), extents[level]);
            if (level + 1 == extents.size()) {
                checkRow(part, index, stride);
                return;
            }
            for (std::size_t i = 0; i < extents[level] && !testing::Test::HasFatalFailure(); ++i) {
                jobject element = elementAt(env, part, i);
                descend(element, level + 1, index + i * stride, stride * extents[level]);
                env->DeleteLocalRef(element);
            }
        };
    ASSERT_FALSE(env->ExceptionCheck());
    descend(array, 0, 0, 1);
}

/// Expects T[]...[] with the value that `element` gives for each linear index.
template <typename T, typename Element>
void expectNested(JNIEnv* env, jobject array, const Extents& extents, Element&& element) {
    checkNested(
        env, array, extents, JPrimitive<T>::arrayClass, [&](jobject row, std::size_t index, std::size_t stride) {
            const auto values = toVector<T>(env, row);
            for (std::size_t i = 0; i < values.size(); ++i) {
                ASSERT_TRUE(isSame<T>(values[i], element(index + i * stride))) << "element " << index + i * stride;
            }
        });
}

/// The same in wrapper objects.
template <typename T, typename Element>
void expectBoxed(JNIEnv* env, jobject array, const Extents& extents, Element&& element) {
    const std::string rowClass = std::string("[L") + JPrimitive<T>::boxedClass + ";";
    checkNested(env, array, extents, rowClass, [&](jobject row, std::size_t index, std::size_t stride) {
        for (std::size_t i = 0; i < lengthOf(env, row); ++i) {
            jobject box = elementAt(env, row, i);
            // The virtual machine takes any byte but 0 for true.
            T expected = element(index + i * stride);
            if constexpr (std::is_same_v<T, jboolean>) {
                expected = expected != 0;
            }
            ASSERT_TRUE(isSame<T>(unboxed<T>(env, box), expected)) << "element " << index + i * stride;
            env->DeleteLocalRef(box);
        }
    });
}

}  // namespace nativevrl::test
