#pragma once

#include <jni.h>

namespace nativevrl::JConvert {

/// What a Java object is to a conversion. No object is of two kinds.
enum class JavaKind {
    null,
    objectArray,  ///< any array of references, arrays of arrays among them
    charArray,
    booleanArray,
    byteArray,
    doubleArray,
    floatArray,
    intArray,
    longArray,
    shortArray,
    string,
    number,
    boolean,
    character,
    other
};

constexpr bool isPrimitiveArray(JavaKind kind) { return kind >= JavaKind::charArray && kind <= JavaKind::shortArray; }

/// Calls `visitor` with a value of the element type of a primitive array's kind. Whether the kind is one.
template <typename Visitor>
bool visitRowType(JavaKind kind, Visitor&& visitor) {
    switch (kind) {
        case JavaKind::charArray:
            visitor(jchar{});
            return true;
        case JavaKind::booleanArray:
            visitor(jboolean{});
            return true;
        case JavaKind::byteArray:
            visitor(jbyte{});
            return true;
        case JavaKind::doubleArray:
            visitor(jdouble{});
            return true;
        case JavaKind::floatArray:
            visitor(jfloat{});
            return true;
        case JavaKind::intArray:
            visitor(jint{});
            return true;
        case JavaKind::longArray:
            visitor(jlong{});
            return true;
        case JavaKind::shortArray:
            visitor(jshort{});
            return true;
        default:
            return false;
    }
}

struct LeafKind;

/// Tells kinds by their class. An object is first compared with the kind of the last one that was no object array: the
/// rows of a nested array, and the elements of a row or a cell, are mostly of one type. So one reader goes through a
/// conversion with all that is within, on the stack of the native that converts.
class JavaKindReader {
public:
    explicit JavaKindReader(JNIEnv* env) : env_(env) {}
    JavaKindReader(const JavaKindReader&) = delete;
    JavaKindReader& operator=(const JavaKindReader&) = delete;

    JNIEnv* env() const noexcept { return env_; }

    JavaKind operator()(jobject object);
    /// Whether an object array can hold nothing but nulls and objects of a kind.
    bool holdsOnly(jobjectArray array, JavaKind kind) const;

private:
    JNIEnv* env_;
    const LeafKind* last_ = nullptr;
};

/// Tells the kinds of the elements of one object array, which is borrowed as the reader is. An array of rows, or of
/// strings or wrapper objects, answers for all of its elements at once.
class ElementKinds {
public:
    ElementKinds(JavaKindReader& kindOf, jobjectArray array) : kindOf_(kindOf), array_(array) {}

    JavaKind operator()(jobject element) {
        if (element == nullptr) {
            return JavaKind::null;
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
    JavaKind common_ = JavaKind::other;
};

}  // namespace nativevrl::JConvert
