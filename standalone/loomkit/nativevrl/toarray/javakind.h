#pragma once

#include <jni.h>

namespace nativevrl::JConvert {

/// What a Java object is to a conversion, in the order in which the tests are made.
enum class JavaKind {
    kNull,
    kObjectArray,  ///< any array of references, arrays of arrays among them
    kCharArray,
    kBooleanArray,
    kByteArray,
    kDoubleArray,
    kFloatArray,
    kIntArray,
    kLongArray,
    kShortArray,
    kOther
};

/// Tells kinds by their class. A primitive array is first compared with the kind of the primitive array before it:
/// the rows of a nested array are mostly of one type, and no object is of two.
class JavaKindReader {
public:
    explicit JavaKindReader(JNIEnv* env) : env_(env) {}

    JavaKind operator()(jobject object);

private:
    JNIEnv* env_;
    JavaKind lastRow_ = JavaKind::kOther;
};

/// Calls `visitor` with a value of the element type of a primitive array's kind; whether the kind is one.
template <typename Visitor>
bool visitPrimitive(JavaKind kind, Visitor&& visitor) {
    switch (kind) {
        case JavaKind::kCharArray:
            visitor(jchar{});
            return true;
        case JavaKind::kBooleanArray:
            visitor(jboolean{});
            return true;
        case JavaKind::kByteArray:
            visitor(jbyte{});
            return true;
        case JavaKind::kDoubleArray:
            visitor(jdouble{});
            return true;
        case JavaKind::kFloatArray:
            visitor(jfloat{});
            return true;
        case JavaKind::kIntArray:
            visitor(jint{});
            return true;
        case JavaKind::kLongArray:
            visitor(jlong{});
            return true;
        case JavaKind::kShortArray:
            visitor(jshort{});
            return true;
        default:
            return false;
    }
}

}  // namespace nativevrl::JConvert
