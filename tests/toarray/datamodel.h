#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// Java data as a tree of plain values, and what array it should become: a model that knows nothing of blocks, strides
/// and JNI.
namespace nativevrl::test {

/// A Java primitive by the letter of its type; `real` holds a float or a double, `integer` all others.
struct JavaValue {
    char type;
    std::int64_t integer;
    double real;
};

struct JavaData {
    enum Kind { null, nested, row, boxed, text, object };

    Kind kind = null;
    std::vector<JavaData> elements;  ///< of an Object[]
    char type = 'D';                 ///< of a primitive row, also an empty one
    std::vector<JavaValue> values;   ///< of a row; one for a boxed value
    std::u16string characters;       ///< of a text

    static JavaData nothing() { return {}; }
    static JavaData arrayOf(std::vector<JavaData> elements);
    static JavaData rowOf(char type, std::vector<JavaValue> values);
    static JavaData box(JavaValue value);
    static JavaData string(std::u16string characters);
    /// A java.lang.Object, which is no value at all.
    static JavaData plainObject();
};

/// The data as a Java object: a local reference of the caller. Arrays of arrays are Object[].
jobject toJava(JNIEnv* env, const JavaData& data);

/// An array as the model sees it: the bits of each element of each part, zero-extended, in column-major order.
struct ModelArray {
    qxClassID classId = qxUNKNOWN_CLASS;
    std::vector<std::uint32_t> extents;
    std::vector<std::uint64_t> real;
    std::vector<std::uint64_t> imaginary;
};

/// The class that the data asks for; 0 for none.
qxClassID modelClass(const JavaData& data);

/// What the pair becomes, class 0 meaning the one of the real part; without an imaginary part when `isComplex` is not
/// set. Objects other than values are not allowed in a char array.
ModelArray modelOf(const JavaData& real, const JavaData& imaginary, qxClassID classId, bool isComplex);

/// A native array in the same form.
ModelArray contentOf(const qxArray* array);

/// Bits of a primitive row's value, and of a boxed one, as an element of a class.
std::uint64_t modelBits(qxClassID classId, const JavaValue& value);
std::uint64_t modelBitsOfBoxed(qxClassID classId, const JavaValue& value);

JavaValue randomValue(std::mt19937& random, char type);
/// Ragged data with nulls, rows of different types and boxed values, at most `depth` levels deep; with `texts` also
/// strings.
JavaData randomData(std::mt19937& random, int depth, std::size_t longest, bool texts);

constexpr char kPrimitiveTypes[] = "ZBCSIJFD";
constexpr qxClassID kElementClasses[] = {qxLOGICAL_CLASS, qxCHAR_CLASS,   qxDOUBLE_CLASS, qxSINGLE_CLASS,
                                         qxINT8_CLASS,    qxUINT8_CLASS,  qxINT16_CLASS,  qxUINT16_CLASS,
                                         qxINT32_CLASS,   qxUINT32_CLASS, qxINT64_CLASS,  qxUINT64_CLASS};

}  // namespace nativevrl::test
