#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <cstdint>
#include <random>
#include <tuple>
#include <vector>

/// Java data as a tree of plain values, and what array it should become: a model that knows nothing of blocks, strides
/// and JNI.
namespace nativevrl::test {

/// Any Java primitive, exactly.
using Value = long double;

struct JavaData {
    enum Kind { null, nested, row, boxed, text, object };

    Kind kind = null;
    char type = 'C';                      ///< letter of a row's or boxed value's primitive type
    std::vector<Value> values = {};       ///< of a row or a text; one for a boxed value
    std::vector<JavaData> elements = {};  ///< of an Object[]
};

/// The data as a Java object: a local reference of the caller. An array whose first element is a row of T is T[][]
/// when `typed` is set, and Object[] otherwise. An `object` is a java.lang.Object, which is no value at all.
jobject toJava(JNIEnv* env, const JavaData& data, bool typed = false);

/// Class, extents, and the bits of each element of the real and the imaginary part, zero-extended, in column-major
/// order.
using ModelArray =
    std::tuple<qxClassID, std::vector<std::uint32_t>, std::vector<std::uint64_t>, std::vector<std::uint64_t>>;

/// The class that the data asks for; 0 for none.
qxClassID modelClass(const JavaData& data);
/// What the pair becomes in a class; without an imaginary part when `isComplex` is not set. In a char array no objects
/// but values are allowed, and no floating ones, whose texts are Java's own affair.
ModelArray modelOf(const JavaData& real, const JavaData& imaginary, qxClassID classId, bool isComplex);
/// A native array in the same form.
ModelArray contentOf(const qxArray* array);
/// Bits of a primitive of a type as an element of a class.
std::uint64_t modelBits(qxClassID classId, char type, Value value, bool isBoxed = false);

std::size_t randomBelow(std::mt19937& random, std::size_t limit);
Value randomValue(std::mt19937& random, char type);
JavaData randomRow(std::mt19937& random, char type, std::size_t length);
/// Ragged data with nulls, rows of different types and boxed values, at most `depth` levels deep; with `texts` strings
/// as well, and no floating types.
JavaData randomData(std::mt19937& random, int depth, std::size_t longest, bool texts);

constexpr char kPrimitiveTypes[] = "ZBCSIJFD";
constexpr qxClassID kElementClasses[] = {qxLOGICAL_CLASS, qxCHAR_CLASS,   qxDOUBLE_CLASS, qxSINGLE_CLASS,
                                         qxINT8_CLASS,    qxUINT8_CLASS,  qxINT16_CLASS,  qxUINT16_CLASS,
                                         qxINT32_CLASS,   qxUINT32_CLASS, qxINT64_CLASS,  qxUINT64_CLASS};

/// Calls `visitor` with a value of the JNI type of a letter.
template <typename Visitor>
auto withType(char type, Visitor&& visitor) {
    return type == 'Z'   ? visitor(jboolean{})
           : type == 'B' ? visitor(jbyte{})
           : type == 'C' ? visitor(jchar{})
           : type == 'S' ? visitor(jshort{})
           : type == 'I' ? visitor(jint{})
           : type == 'J' ? visitor(jlong{})
           : type == 'F' ? visitor(jfloat{})
                         : visitor(jdouble{});
}

}  // namespace nativevrl::test
