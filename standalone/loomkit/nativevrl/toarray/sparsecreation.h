#pragma once

#include "proxies/jobjectproxy.h"
#include "qx/arrayowner.h"

#include <jni.h>

namespace nativevrl::JConvert {

/// The numbers that a caller states of a sparse matrix. Rows and columns are both negative when they are to be
/// computed from the indices; a negative room means as much as there are elements.
struct SparseStatement {
    jint rows;
    jint columns;
    jint room;
    qxClassID classId;
    qxComplexity complexity;
};

/// Raises java.lang.ArrayStoreException for a class other than double and logical.
void checkSparseClass(JNIEnv* env, qxClassID classId);

/// A sparse matrix from index lists, which count from 1, and a dense row of values, borrowed: each of them one
/// element, which stands for all, or as many as the longest has. All three are null for an empty matrix. The result is
/// free-standing and never null. Complexity is that of the data where there is any.
///
/// What doesn't fit together raises java.lang.IllegalArgumentException, a lack of memory at whatever step
/// java.lang.OutOfMemoryError. Indices that are out of range throw
/// IndexTranslator::negative_index_exception, RangeMaxChecker<unsigned>::overflow_exception or, from a list of one,
/// boost::numeric::bad_numeric_cast.
qxArrayOwner qxCreateSparseMatrixFromTriplets(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const qxArray* data,
                                              const SparseStatement& stated);

/// The same with the values as Java objects, one level deep. The failures of index values are raised as
/// java.lang.ArrayIndexOutOfBoundsException.
qxArrayOwner createSparseFromJava(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const JObjectProxy& real,
                                  const JObjectProxy& imaginary, const SparseStatement& stated);

/// A sparse matrix with the elements of a dense one that are not zero. Data that is not two-dimensional raises
/// java.lang.ArrayStoreException.
qxArrayOwner convertToSparse(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary, qxClassID classId,
                             qxComplexity complexity);

}  // namespace nativevrl::JConvert
