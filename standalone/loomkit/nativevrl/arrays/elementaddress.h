#pragma once

#include "arrays/sparseelementview.h"
#include "arrays/subscripts.h"

#include <jni.h>

#include <cstddef>
#include <optional>

/// The two ways in which Java names one element. Each is checked against the array before it is turned into a
/// position.
namespace nativevrl {

/// An index from 0 in stored column-major order.
class LinearAddress {
public:
    LinearAddress(JNIEnv* env, jint index) : env_(env), index_(index) {}

    void check(const qxArray* array) const { checkLinearIndex(env_, array, index_); }

    /// Position in the data blocks of a dense array.
    std::size_t denseIndex(const qxArray*) const { return static_cast<std::size_t>(index_); }

    SparsePosition sparsePosition(const SparseArrayView& view) const {
        return view.positionOf(static_cast<std::size_t>(index_));
    }

private:
    JNIEnv* env_;
    jint index_;
};

/// One subscript from 1 per dimension, in a Java array that stays pinned from the check on.
class SubscriptAddress {
public:
    SubscriptAddress(JNIEnv* env, jintArray subscripts) : subscripts_(env, subscripts) {}

    void check(const qxArray* array) {
        checkSubscripts(subscripts_.env(), array->get_dimensions(), array->numberOfDimensions(), subscripts_,
                        subscripts_.length());
    }

    std::size_t denseIndex(const qxArray* array) {
        const MSubscriptToC map;
        return computeSingleSubscript(array->get_dimensions(), array->numberOfDimensions(), subscripts_.elements(),
                                      map);
    }

    SparsePosition sparsePosition(const SparseArrayView&) {
        const jint* subscripts = subscripts_.elements();
        return {static_cast<std::uint32_t>(subscripts[0] - 1), static_cast<std::uint32_t>(subscripts[1] - 1)};
    }

private:
    JavaSubscripts subscripts_;
};

inline LinearAddress addressOf(JNIEnv* env, jint index) { return {env, index}; }

inline SubscriptAddress addressOf(JNIEnv* env, jintArray subscripts) { return {env, subscripts}; }

/// Where the data blocks hold an element whose address has been checked; nothing for a gap of a sparse array.
template <typename Address>
std::optional<std::size_t> findData(JNIEnv* env, qxArray* array, Address& address) {
    if (!array->isSparse()) {
        return address.denseIndex(array);
    }
    const SparseArrayView view(array);
    const SparseArrayView::Range range = view.findRange(address.sparsePosition(view));
    if (!range.isStored()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(toJavaInt(env, range.first));
}

}  // namespace nativevrl
