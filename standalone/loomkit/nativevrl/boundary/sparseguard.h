#pragma once

#include "boundary/boundary.h"

#include <boost/numeric/conversion/cast.hpp>

#include <string>
#include <utility>

namespace nativevrl {

[[noreturn]] inline void refuseSparseIndex(JNIEnv* env, const char* message) {
    raise<tether::ArrayIndexOutOfBoundsException>(env, "java/lang/ArrayIndexOutOfBoundsException", message);
}

/// Runs `body`, which puts a sparse array together from row and column indices. An index below 1, which it throws as
/// NegativeIndex, one beyond the stated dimensions, as IndexOverflow, and a size that fails its cast raise
/// java.lang.ArrayIndexOutOfBoundsException.
template <typename NegativeIndex, typename IndexOverflow, typename Body>
decltype(auto) sparseGuarded(JNIEnv* env, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const NegativeIndex&) {
        refuseSparseIndex(env, "While creating sparse array: non-zero element index less than 1");
    } catch (const IndexOverflow&) {
        refuseSparseIndex(env, "While creating sparse array: non-zero element index larger than array dimensions");
    } catch (const boost::numeric::bad_numeric_cast& failure) {
        refuseSparseIndex(env, (std::string("While creating sparse array: ") + failure.what()).c_str());
    }
}

}  // namespace nativevrl
