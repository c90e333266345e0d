#pragma once

#include "arrays/subscripts.h"
#include "layout/sparsecolumns.h"

#include <jni.h>

#include <cstddef>
#include <optional>

/// The two ways in which Java names one element. Each is checked against the array and turned into a position once,
/// and nothing of Java's is read again after that: code of the caller's may run before the position is used.
namespace nativevrl {

/// The place of an element of one array.
struct ElementPosition {
    std::size_t index;      ///< in the data blocks of a dense array
    SparsePosition sparse;  ///< of a sparse one
};

/// An index from 0 in stored column-major order.
class LinearAddress {
public:
    LinearAddress(JNIEnv* env, jint index) : env_(env), index_(index) {}

    ElementPosition resolve(const qxArray* array) const {
        checkLinearIndex(env_, array, index_);
        const auto index = static_cast<std::size_t>(index_);
        return array->isSparse() ? ElementPosition{0, SparseColumns::of(array).positionOf(index)}
                                 : ElementPosition{index, {}};
    }

private:
    JNIEnv* env_;
    jint index_;
};

/// One subscript from 1 per dimension, in a Java array that stays pinned from the check on.
class SubscriptAddress {
public:
    SubscriptAddress(JNIEnv* env, jintArray subscripts) : subscripts_(env, subscripts) {}

    ElementPosition resolve(const qxArray* array) {
        check(array);
        if (!array->isSparse()) {
            return {subscriptIndex(array), {}};
        }
        const jint* subscripts = subscripts_.elements();
        return {0, {static_cast<std::uint32_t>(subscripts[0] - 1), static_cast<std::uint32_t>(subscripts[1] - 1)}};
    }

    /// Index from 0 in column-major order, whether the array is dense or sparse.
    unsigned resolveIndex(const qxArray* array) {
        check(array);
        return subscriptIndex(array);
    }

private:
    void check(const qxArray* array) {
        checkSubscripts(subscripts_.env(), array->get_dimensions(), array->numberOfDimensions(), subscripts_,
                        subscripts_.length());
    }

    unsigned subscriptIndex(const qxArray* array) {
        const MSubscriptToC map;
        return computeSingleSubscript(array->get_dimensions(), array->numberOfDimensions(), subscripts_.elements(),
                                      map);
    }

    PinnedElements<jint> subscripts_;
};

inline LinearAddress addressOf(JNIEnv* env, jint index) { return {env, index}; }

inline SubscriptAddress addressOf(JNIEnv* env, jintArray subscripts) { return {env, subscripts}; }

/// Where the data blocks hold an element; nothing for a gap of a sparse array.
inline std::optional<std::size_t> findData(JNIEnv* env, const qxArray* array, const ElementPosition& position) {
    if (!array->isSparse()) {
        return position.index;
    }
    const StoredRange range = SparseColumns::of(array).findRange(position.sparse);
    if (!range.isStored()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(toJavaInt(env, range.first));
}

}  // namespace nativevrl
