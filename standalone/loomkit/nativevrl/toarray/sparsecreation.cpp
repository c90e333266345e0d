#include "toarray/sparsecreation.h"

#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "boundary/sparseguard.h"
#include "proxies/invariant.h"
#include "proxies/pinnedelements.h"
#include "toarray/arraycreation.h"
#include "toarray/jconvert.h"
#include "toarray/sparsebuilder.h"

#include <boost/numeric/conversion/cast.hpp>

#include <algorithm>
#include <string>
#include <utility>
#include <variant>

namespace nativevrl::JConvert {

namespace {

void require(JNIEnv* env, bool holds, const char* message) {
    if (!holds) {
        raise(env, "java/lang/IllegalArgumentException", message);
    }
}

std::size_t lengthOf(JNIEnv* env, jintArray array) {
    return array == nullptr ? 0 : static_cast<std::size_t>(env->GetArrayLength(array));
}

/// What a sparse matrix is made of, each part in order with the others. The objects are borrowed; all three are null
/// for a matrix without elements.
struct Triplets {
    jintArray rows;
    jintArray columns;
    const qxArray* values;
    bool isComplex;
    std::size_t valueCount;  ///< as many as there are elements, or one for all
    std::size_t count;
    std::uint32_t room;  ///< elements to make room for, `count` at least
};

void checkData(JNIEnv* env, const qxArray* data) {
    require(env, data->numberOfDimensions() == 2 && data->get_dimensions()[0] <= 1,
            "While creating sparse matrix: initial data must be a one dimensional array");
    require(env, !data->isSparse(), "While creating sparse matrix: initial data must be a dense array");
}

/// The checks of what goes together, in their order.
Triplets checkedTriplets(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const qxArray* data,
                         const SparseStatement& stated) {
    const bool hasData = data != nullptr;
    require(env, (rowIndex != nullptr) == hasData && (colIndex != nullptr) == hasData,
            "While creating sparse matrix: row index array, column index array, and initial value array must all be "
            "either NULL or non-NULL");
    const bool isComplexInForce = hasData ? isComplex(data) : stated.complexity == qxCOMPLEX;
    require(env, stated.classId != qxLOGICAL_CLASS || !isComplexInForce,
            "While creating sparse matrix: complex logical sparse arrays not supported");
    require(env, stated.classId == qxLOGICAL_CLASS || stated.classId == qxDOUBLE_CLASS,
            "While creating sparse matrix: double and logical are the only supported sparse array types");
    if (hasData) {
        checkData(env, data);
    }
    const std::size_t rows = lengthOf(env, rowIndex);
    const std::size_t columns = lengthOf(env, colIndex);
    const std::size_t values = hasData ? data->get_dimensions()[1] : std::size_t{0};
    const std::size_t count = std::max({values, columns, rows});
    const auto limit =
        stated.room >= 0 ? boost::numeric_cast<std::uint32_t>(stated.room) : static_cast<std::uint32_t>(count);
    const auto fits = [&](std::size_t length) { return length == count || length == 1; };
    // A 0-by-n array counts n values and has none.
    const bool hasValues = values == 0 || !qxIsEmpty(data);
    require(env, hasValues && fits(rows) && fits(columns) && fits(values),
            "While creating sparse matrix: all three initial data vectors (i, j, and value) must either be length 1 "
            "or the same as the maximum of the three (nz)");
    require(env, count <= limit,
            "While creating sparse matrix: initial non-zero elements greater than maximum non-zero");
    require(env, (stated.rows < 0) == (stated.columns < 0),
            "While creating sparse matrix: rows and columns must BOTH be specified or NEITHER");
    return {rowIndex, colIndex, data, isComplexInForce, values, count, limit};
}

using AnyIndex = std::variant<IndexList, BroadcastIndex>;
using AnyValue = std::variant<ValueList, BroadcastValue>;
using AnyDimensions = std::variant<ComputedDimensions, StatedDimensions>;

/// A list of one element is one index for all.
AnyIndex indexOver(const PinnedElements<jint>& indices) {
    if (indices.length() == 1) {
        // In 64 bits, so that the lowest int keeps its sign.
        return BroadcastIndex(boost::numeric_cast<unsigned>(static_cast<jlong>(*indices.begin()) - 1));
    }
    return IndexList(indices.begin());
}

AnyDimensions dimensionsOf(const SparseStatement& stated) {
    if (stated.rows < 0) {
        return ComputedDimensions();
    }
    return StatedDimensions(static_cast<unsigned>(stated.rows), static_cast<unsigned>(stated.columns));
}

/// Picks the builder for the triplets, whose values are of the kind that Entry holds.
template <typename Entry>
qxArrayOwner buildWith(JNIEnv* env, const Triplets& triplets, const SparseStatement& stated) {
    const PinnedElements<jint> rows(env, triplets.rows);
    const PinnedElements<jint> columns(env, triplets.columns);
    const AnyIndex rowSource = indexOver(rows);
    const AnyIndex columnSource = indexOver(columns);
    const AnyValue valueSource = triplets.valueCount == 1 ? AnyValue(BroadcastValue()) : AnyValue(ValueList());
    return std::visit(
        [&](auto row, auto column, auto value, auto dimensions) {
            const TripletSource<decltype(row), decltype(column), decltype(value)> source{triplets.count, row, column,
                                                                                         value, *triplets.values};
            return buildSparseFromTriplets<Entry>(source, dimensions, triplets.room);
        },
        rowSource, columnSource, valueSource, dimensionsOf(stated));
}

qxArrayOwner build(JNIEnv* env, const Triplets& triplets, const SparseStatement& stated) {
    const bool isLogical = stated.classId == qxLOGICAL_CLASS;
    if (triplets.count == 0) {
        return qxArrayOwner(isLogical ? qxCreateSparseLogicalMatrix(stated.rows, stated.columns, triplets.room)
                                      : qxCreateSparse(stated.rows, stated.columns, triplets.room,
                                                       triplets.isComplex ? qxCOMPLEX : qxREAL));
    }
    if (isLogical) {
        return buildWith<LogicalEntry>(env, triplets, stated);
    }
    return triplets.isComplex ? buildWith<ComplexEntry>(env, triplets, stated)
                              : buildWith<RealEntry>(env, triplets, stated);
}

qxArrayOwner convertInitialData(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary,
                                const SparseStatement& stated) {
    qxArrayOwner data = convertObjectPair(env, real, imaginary, stated.classId, stated.complexity);
    if (data->get_dimensions()[0] != 1 && !qxIsEmpty(data.get())) {
        raise(env, "java/lang/ArrayStoreException", "Data array(s) for sparse initialization must be one dimensional");
    }
    return data;
}

}  // namespace

void checkSparseClass(JNIEnv* env, qxClassID classId) {
    if (classId != qxDOUBLE_CLASS && classId != qxLOGICAL_CLASS) {
        const std::string message = std::string("Sparse arrays not supported for type: ") + qxGetClassName(classId);
        raise(env, "java/lang/ArrayStoreException", message.c_str());
    }
}

qxArrayOwner qxCreateSparseMatrixFromTriplets(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const qxArray* data,
                                              const SparseStatement& stated) {
    const Triplets triplets = checkedTriplets(env, rowIndex, colIndex, data, stated);
    qxArrayOwner made = build(env, triplets, stated);
    // Without elements the extents are the array library's to judge: negative ones make no array, and no failure.
    const bool isNone = triplets.count == 0 && (stated.rows < 0 || stated.columns < 0);
    return isNone ? std::move(made) : requireCreated(env, std::move(made));
}

qxArrayOwner createSparseFromJava(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const JObjectProxy& real,
                                  const JObjectProxy& imaginary, const SparseStatement& stated) {
    return sparseGuarded<IndexTranslator::negative_index_exception, RangeMaxChecker<unsigned>::overflow_exception>(
        env, [&]() -> qxArrayOwner {
            checkSparseClass(env, stated.classId);
            if (real.isNull() && imaginary.isNull()) {
                return qxCreateSparseMatrixFromTriplets(env, rowIndex, colIndex, nullptr, stated);
            }
            const qxArrayOwner data = convertInitialData(env, real, imaginary, stated);
            return qxCreateSparseMatrixFromTriplets(env, rowIndex, colIndex, data.get(), stated);
        });
}

qxArrayOwner convertToSparse(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary, qxClassID classId,
                             qxComplexity complexity) {
    checkSparseClass(env, classId);
    const qxArrayOwner nonSparse = convertObjectPair(env, real, imaginary, classId, complexity);
    stateInvariant(nonSparse != nullptr, "NULL != nonSparse", __FILE__, __LINE__);
    if (nonSparse->numberOfDimensions() != 2) {
        raise(env, "java/lang/ArrayStoreException", "Data array(s) for sparse conversion must be two dimensional");
    }
    return requireCreated(env, qxArrayOwner(qxMustBeSparse(nonSparse.get())));
}

}  // namespace nativevrl::JConvert
