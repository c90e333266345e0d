#pragma once

#include <jni.h>

#include <cstddef>
#include <type_traits>

namespace nativevrl {

template <typename... Types>
struct TypeList {
    /// Another template over the same types.
    template <template <typename...> class Target>
    using In = Target<Types...>;

    /// Place of a type in the list, from 0.
    template <typename T>
    static constexpr std::size_t indexOf() {
        std::size_t index = 0;
        static_cast<void>(((std::is_same_v<T, Types> || (++index, false)) || ...));
        return index;
    }
};

/// The eight Java element types; what differs between them stands in the specialisations of JPrimitive.
using JPrimitiveTypes = TypeList<jboolean, jbyte, jchar, jshort, jint, jlong, jfloat, jdouble>;

/// The types that a java.lang.Number is read as, in the order of its accessors' names.
using JNumberTypes = TypeList<jbyte, jdouble, jfloat, jint, jlong, jshort>;

/// What differs between the Java element types.
///
/// `letter` is the type's letter in signatures, `arrayClass` the class name of its arrays, `boxedClass` its wrapper,
/// `valueMember` the member of jvalue. JNumberTypes have the static `parser` of their wrapper, too, the accessor
/// `numberMethod` of java.lang.Number and the `callMethod` that calls it.
template <typename T>
struct JPrimitive;

template <>
struct JPrimitive<jboolean> {
    using Array = jbooleanArray;
    static constexpr char letter = 'Z';
    static constexpr const char* arrayClass = "[Z";
    static constexpr const char* boxedClass = "java/lang/Boolean";
    static constexpr auto newArray = &JNIEnv::NewBooleanArray;
    static constexpr auto getElements = &JNIEnv::GetBooleanArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseBooleanArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetBooleanArrayRegion;
    static constexpr auto valueMember = &jvalue::z;
};

template <>
struct JPrimitive<jbyte> {
    using Array = jbyteArray;
    static constexpr char letter = 'B';
    static constexpr const char* arrayClass = "[B";
    static constexpr const char* boxedClass = "java/lang/Byte";
    static constexpr const char* parser = "parseByte";
    static constexpr const char* numberMethod = "byteValue";
    static constexpr auto callMethod = &JNIEnv::CallByteMethod;
    static constexpr auto newArray = &JNIEnv::NewByteArray;
    static constexpr auto getElements = &JNIEnv::GetByteArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseByteArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetByteArrayRegion;
    static constexpr auto valueMember = &jvalue::b;
};

template <>
struct JPrimitive<jchar> {
    using Array = jcharArray;
    static constexpr char letter = 'C';
    static constexpr const char* arrayClass = "[C";
    static constexpr const char* boxedClass = "java/lang/Character";
    static constexpr auto newArray = &JNIEnv::NewCharArray;
    static constexpr auto getElements = &JNIEnv::GetCharArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseCharArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetCharArrayRegion;
    static constexpr auto valueMember = &jvalue::c;
};

template <>
struct JPrimitive<jshort> {
    using Array = jshortArray;
    static constexpr char letter = 'S';
    static constexpr const char* arrayClass = "[S";
    static constexpr const char* boxedClass = "java/lang/Short";
    static constexpr const char* parser = "parseShort";
    static constexpr const char* numberMethod = "shortValue";
    static constexpr auto callMethod = &JNIEnv::CallShortMethod;
    static constexpr auto newArray = &JNIEnv::NewShortArray;
    static constexpr auto getElements = &JNIEnv::GetShortArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseShortArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetShortArrayRegion;
    static constexpr auto valueMember = &jvalue::s;
};

template <>
struct JPrimitive<jint> {
    using Array = jintArray;
    static constexpr char letter = 'I';
    static constexpr const char* arrayClass = "[I";
    static constexpr const char* boxedClass = "java/lang/Integer";
    static constexpr const char* parser = "parseInt";
    static constexpr const char* numberMethod = "intValue";
    static constexpr auto callMethod = &JNIEnv::CallIntMethod;
    static constexpr auto newArray = &JNIEnv::NewIntArray;
    static constexpr auto getElements = &JNIEnv::GetIntArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseIntArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetIntArrayRegion;
    static constexpr auto valueMember = &jvalue::i;
};

template <>
struct JPrimitive<jlong> {
    using Array = jlongArray;
    static constexpr char letter = 'J';
    static constexpr const char* arrayClass = "[J";
    static constexpr const char* boxedClass = "java/lang/Long";
    static constexpr const char* parser = "parseLong";
    static constexpr const char* numberMethod = "longValue";
    static constexpr auto callMethod = &JNIEnv::CallLongMethod;
    static constexpr auto newArray = &JNIEnv::NewLongArray;
    static constexpr auto getElements = &JNIEnv::GetLongArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseLongArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetLongArrayRegion;
    static constexpr auto valueMember = &jvalue::j;
};

template <>
struct JPrimitive<jfloat> {
    using Array = jfloatArray;
    static constexpr char letter = 'F';
    static constexpr const char* arrayClass = "[F";
    static constexpr const char* boxedClass = "java/lang/Float";
    static constexpr const char* parser = "parseFloat";
    static constexpr const char* numberMethod = "floatValue";
    static constexpr auto callMethod = &JNIEnv::CallFloatMethod;
    static constexpr auto newArray = &JNIEnv::NewFloatArray;
    static constexpr auto getElements = &JNIEnv::GetFloatArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseFloatArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetFloatArrayRegion;
    static constexpr auto valueMember = &jvalue::f;
};

template <>
struct JPrimitive<jdouble> {
    using Array = jdoubleArray;
    static constexpr char letter = 'D';
    static constexpr const char* arrayClass = "[D";
    static constexpr const char* boxedClass = "java/lang/Double";
    static constexpr const char* parser = "parseDouble";
    static constexpr const char* numberMethod = "doubleValue";
    static constexpr auto callMethod = &JNIEnv::CallDoubleMethod;
    static constexpr auto newArray = &JNIEnv::NewDoubleArray;
    static constexpr auto getElements = &JNIEnv::GetDoubleArrayElements;
    static constexpr auto releaseElements = &JNIEnv::ReleaseDoubleArrayElements;
    static constexpr auto setRegion = &JNIEnv::SetDoubleArrayRegion;
    static constexpr auto valueMember = &jvalue::d;
};

/// A value as an argument of a Java call.
template <typename T>
jvalue asArgument(T value) {
    jvalue argument = {};
    argument.*JPrimitive<T>::valueMember = value;
    return argument;
}

/// A reference, borrowed, as an argument of a Java call.
inline jvalue objectArgument(jobject object) {
    jvalue argument = {};
    argument.l = object;
    return argument;
}

}  // namespace nativevrl
