#include "toarray/sparsecreation.h"

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "boundary/sparseguard.h"
#include "proxies/invariant.h"
#include "proxies/pinnedelements.h"
#include "qx/arrayowner.h"
#include "toarray/jconvert.h"
#include "toarray/sparsebuilder.h"

#include <boost/numeric/conversion/cast.hpp>

#include <new>
#include <string>
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

/// How many elements each of the three inputs has, and what follows from that.
struct TripletCounts {
    std::size_t rows;
    std::size_t columns;
    std::size_t values;

    std::size_t elements() const { return std::max({values, columns, rows}); }
    bool fits(std::size_t count) const { return count == elements() || count == 1; }
};

void checkData(JNIEnv* env, const qxArray* data) {
    require(env, data->numberOfDimensions() == 2 && data->get_dimensions()[0] <= 1,
            "While creating sparse matrix: initial data must be a one dimensional array");
    require(env, !data->isSparse(), "While creating sparse matrix: initial data must be a dense array");
}

/// The checks of what goes together, in their order; returns how many elements to make room for.
std::uint32_t checkTriplets(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const qxArray* data,
                            bool isComplexInForce, const SparseStatement& stated, TripletCounts& counts) {
    const bool hasData = data != nullptr;
    require(env, (rowIndex != nullptr) == hasData && (colIndex != nullptr) == hasData,
            "While creating sparse matrix: row index array, column index array, and initial value array must all be "
            "either NULL or non-NULL");
    require(env, stated.classId != qxLOGICAL_CLASS || !isComplexInForce,
            "While creating sparse matrix: complex logical sparse arrays not supported");
    require(env, stated.classId == qxLOGICAL_CLASS || stated.classId == qxDOUBLE_CLASS,
            "While creating sparse matrix: double and logical are the only supported sparse array types");
    if (hasData) {
        checkData(env, data);
    }
    counts = {lengthOf(env, rowIndex), lengthOf(env, colIndex), hasData ? data->get_dimensions()[1] : std::size_t{0}};
    // A 0-by-n array counts n values and has none.
    const bool hasValues = counts.values == 0 || !qxIsEmpty(data);
    const std::size_t elements = counts.elements();
    const auto limit =
        stated.room >= 0 ? boost::numeric_cast<std::uint32_t>(stated.room) : static_cast<std::uint32_t>(elements);
    require(env, hasValues && counts.fits(counts.rows) && counts.fits(counts.columns) && counts.fits(counts.values),
            "While creating sparse matrix: all three initial data vectors (i, j, and value) must either be length 1 "
            "or the same as the maximum of the three (nz)");
    require(env, elements <= limit,
            "While creating sparse matrix: initial non-zero elements greater than maximum non-zero");
    require(env, (stated.rows < 0) == (stated.columns < 0),
            "While creating sparse matrix: rows and columns must BOTH be specified or NEITHER");
    return limit;
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

/// Picks the builder for a kind of value.
template <typename Entry>
qxArray* buildWith(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const qxArray& data,
                   const SparseStatement& stated, const TripletCounts& counts, std::uint32_t room) {
    const PinnedElements<jint> rows(env, rowIndex);
    const PinnedElements<jint> columns(env, colIndex);
    const AnyIndex rowSource = indexOver(rows);
    const AnyIndex columnSource = indexOver(columns);
    const AnyValue values = counts.values == 1 ? AnyValue(BroadcastValue()) : AnyValue(ValueList());
    try {
        return std::visit(
            [&](auto row, auto column, auto value, auto dimensions) {
                return buildSparseFromTriplets<Entry>(counts.elements(), row, column, value, data, dimensions, room);
            },
            rowSource, columnSource, values, dimensionsOf(stated));
    } catch (const std::bad_alloc&) {
        tether::throwOutOfMemory(env);
    }
}

qxArray* convertInitialData(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary,
                            const SparseStatement& stated) {
    qxArrayOwner data(convertObjectPair(env, real, imaginary, stated.classId, stated.complexity));
    if (data->get_dimensions()[0] != 1 && !qxIsEmpty(data.get())) {
        raise(env, "java/lang/ArrayStoreException", "Data array(s) for sparse initialization must be one dimensional");
    }
    return data.release();
}

}  // namespace

void checkSparseClass(JNIEnv* env, qxClassID classId) {
    if (classId != qxDOUBLE_CLASS && classId != qxLOGICAL_CLASS) {
        const std::string message = std::string("Sparse arrays not supported for type: ") + qxGetClassName(classId);
        raise(env, "java/lang/ArrayStoreException", message.c_str());
    }
}

qxArray* qxCreateSparseMatrixFromTriplets(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const qxArray* data,
                                          const SparseStatement& stated) {
    const bool isComplexInForce = data != nullptr ? isComplex(data) : stated.complexity == qxCOMPLEX;
    TripletCounts counts{};
    const std::uint32_t room = checkTriplets(env, rowIndex, colIndex, data, isComplexInForce, stated, counts);
    if (data == nullptr || counts.elements() == 0) {
        return stated.classId == qxLOGICAL_CLASS
                   ? qxCreateSparseLogicalMatrix(stated.rows, stated.columns, room)
                   : qxCreateSparse(stated.rows, stated.columns, room, isComplexInForce ? qxCOMPLEX : qxREAL);
    }
    if (stated.classId == qxLOGICAL_CLASS) {
        return buildWith<LogicalEntry>(env, rowIndex, colIndex, *data, stated, counts, room);
    }
    return isComplexInForce ? buildWith<ComplexEntry>(env, rowIndex, colIndex, *data, stated, counts, room)
                            : buildWith<RealEntry>(env, rowIndex, colIndex, *data, stated, counts, room);
}

qxArray* createSparseFromJava(JNIEnv* env, jintArray rowIndex, jintArray colIndex, const JObjectProxy& real,
                              const JObjectProxy& imaginary, const SparseStatement& stated) {
    return sparseGuarded<IndexTranslator::negative_index_exception, RangeMaxChecker<unsigned>::overflow_exception>(
        env, [&]() -> qxArray* {
            checkSparseClass(env, stated.classId);
            if (real.isNull() && imaginary.isNull()) {
                return qxCreateSparseMatrixFromTriplets(env, rowIndex, colIndex, nullptr, stated);
            }
            const qxArrayOwner data(convertInitialData(env, real, imaginary, stated));
            SparseStatement statedByData = stated;
            statedByData.complexity = qxREAL;
            return qxCreateSparseMatrixFromTriplets(env, rowIndex, colIndex, data.get(), statedByData);
        });
}

qxArray* convertToSparse(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary, qxClassID classId,
                         qxComplexity complexity) {
    checkSparseClass(env, classId);
    const qxArrayOwner nonSparse(convertObjectPair(env, real, imaginary, classId, complexity));
    stateInvariant(nonSparse != nullptr, "NULL != nonSparse", __FILE__, __LINE__);
    if (nonSparse->numberOfDimensions() != 2) {
        raise(env, "java/lang/ArrayStoreException", "Data array(s) for sparse conversion must be two dimensional");
    }
    qxArray* result = qxMustBeSparse(nonSparse.get());
    if (result == nullptr) {
        raise<tether::OutOfMemoryException>(env, "java/lang/OutOfMemoryError", "Unable to create qxArray");
    }
    return setFreeScope(result);
}

}  // namespace nativevrl::JConvert
