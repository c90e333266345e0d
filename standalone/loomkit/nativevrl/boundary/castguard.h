#pragma once

#include "boundary/boundary.h"

#include <boost/numeric/conversion/cast.hpp>

#include <utility>

namespace nativevrl {

/// Runs `body`; a size or index in it that fails its cast raises a Java exception of a class with a message and
/// throws the marker that goes with it.
template <typename Marker = tether::Exception, typename Body>
decltype(auto) castGuarded(JNIEnv* env, const char* className, const char* message, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const boost::numeric::bad_numeric_cast&) {
        raise<Marker>(env, className, message);
    }
}

}  // namespace nativevrl
