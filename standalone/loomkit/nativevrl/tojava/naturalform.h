#pragma once

#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "tojava/leaves.h"
#include "tojava/partview.h"

#include <type_traits>

/// The Java form that an array has by itself: numbers, truth values and text in the primitive type of their width, the
/// slots of cells, structs and function handles in wrappers.
namespace nativevrl {

/// A part of an array, to be read into rows of a leaf.
template <typename LeafType>
struct NaturalPart {
    using Leaf = LeafType;
    PartView<typename Leaf::Element> view;
};

template <typename Part>
using LeafOf = typename std::decay_t<Part>::Leaf;

/// Calls `build` with the NaturalPart of an array, and gives what it gives. Raises
/// java.lang.UnsupportedOperationException for a class without such a form.
template <typename Build>
jobject buildNaturally(JNIEnv* env, const qxArray* array, bool real, Build&& build) {
    return visitElementClass(
        classIdOf(array),
        [&](auto one) -> jobject {
            using T = typename decltype(one)::Java;
            return build(NaturalPart<PrimitiveLeaf<T>>{*PartView<T>::of(array, real)});
        },
        [&]() -> jobject {
            if (!hasSlots(classIdOf(array))) {
                raise(env, "java/lang/UnsupportedOperationException",
                      "Can not convert the given TAVRIX array type to a Java type.");
            }
            return build(NaturalPart<SlotLeaf>{PartView<qxArray*>::ofSlots(array, real)});
        });
}

}  // namespace nativevrl
