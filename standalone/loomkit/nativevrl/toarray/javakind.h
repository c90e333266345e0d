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
    kString,
    kNumber,
    kBoolean,
    kCharacter,
    kOther
};

constexpr bool isPrimitiveArray(JavaKind kind) { return kind >= JavaKind::kCharArray && kind <= JavaKind::kShortArray; }

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

/// Tells kinds by their class. An object is first compared with the kind of the last one on this thread that was no
/// object array: the rows of a nested array, and the elements of a row or a cell, are mostly of one type, and no object
/// is of two.
class JavaKindReader {
public:
    explicit JavaKindReader(JNIEnv* env) : env_(env) {}

    JavaKind operator()(jobject object) const;
    /// Whether an object array can hold nothing but nulls and objects of a kind.
    bool holdsOnly(jobjectArray array, JavaKind kind) const;

private:
    JNIEnv* env_;
};

/// Tells the kinds of the elements of one object array, which is borrowed as the reader is. An array of rows, or of
/// strings or wrapper objects, answers for all of its elements at once.
class ElementKinds {
public:
    ElementKinds(JavaKindReader& kindOf, jobjectArray array) : kindOf_(kindOf), array_(array) {}

    JavaKind operator()(jobject element) {
        if (element == nullptr) {
            return JavaKind::kNull;
        }
        if (state_ == State::common) {
            return common_;
        }
        const JavaKind kind = kindOf_(element);
        if (state_ == State::unknown) {
            state_ = kindOf_.holdsOnly(array_, kind) ? State::common : State::mixed;
            common_ = kind;
        }
        return kind;
    }

private:
    enum class State { unknown, common, mixed };

    JavaKindReader& kindOf_;
    jobjectArray array_;
    State state_ = State::unknown;
    JavaKind common_ = JavaKind::kOther;
};

}  // namespace nativevrl::JConvert
