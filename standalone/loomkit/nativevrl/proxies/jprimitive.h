#pragma once

#include <jni.h>

namespace nativevrl {

/// The eight Java element types: the only place where they are written out.
///
/// `letter` is the type's letter in signatures, `arrayClass` the class name of its arrays, `boxedClass` its
/// wrapper, `parser` the wrapper's static parser (null where there is none), `valueMember` the member of jvalue.
template <typename T>
struct JPrimitive;

template <>
struct JPrimitive<jboolean> {
    using Array = jbooleanArray;
    static constexpr char letter = 'Z';
    static constexpr const char* arrayClass = "[Z";
    static constexpr const char* boxedClass = "java/lang/Boolean";
    static constexpr const char* parser = nullptr;
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
    static constexpr const char* parser = nullptr;
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

}  // namespace nativevrl
