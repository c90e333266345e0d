#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <cstddef>
#include <vector>

/// What the natives ask of an array before they read or write it. Arrays are borrowed and not null.
namespace nativevrl {

/// Class id with the slow query behind it where the class word is not final.
inline qxClassID classIdOf(const qxArray* array) {
    const std::uint32_t word = array->classWord();
    return word > qxFUNCTION_CLASS ? array->_get_class_id_non_trivial() : static_cast<qxClassID>(word);
}

/// The classes whose elements are arrays themselves, in a table of slots.
constexpr bool hasSlots(qxClassID id) { return id == qxCELL_CLASS || id == qxSTRUCT_CLASS || id == qxFUNCTION_CLASS; }

/// The extents, first dimension first.
std::vector<unsigned> extentsOf(const qxArray* array);

/// The complex flag is set and there is an imaginary block.
inline bool isComplex(const qxArray* array) { return array->hasComplexFlag() && array->imagData() != nullptr; }

/// Block of the real or the imaginary part.
inline void* partOf(const qxArray* array, bool real) { return real ? array->realData() : array->imagData(); }

/// Raises java.lang.IllegalArgumentException when the imaginary part of a real array is asked for. The array may be
/// null with `real` true.
void checkImaginaryAccess(JNIEnv* env, const qxArray* array, bool real);

/// Raises java.lang.NullPointerException when the block of a part is missing and there are elements.
void requirePart(JNIEnv* env, const qxArray* array, bool real);

/// Elements that the data blocks hold: 0 for an empty array, the stored ones of a sparse array.
std::size_t storedElementCount(const qxArray* array);

}  // namespace nativevrl
