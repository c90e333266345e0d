#pragma once

#include "tether/jnicalls.h"

#include <cstddef>
#include <limits>

namespace nativevrl {

/// A length for a new Java array or string. What no Java array can hold raises java.lang.OutOfMemoryError and
/// throws tether::OutOfMemoryException.
inline jsize javaLength(JNIEnv* env, std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<jsize>::max())) {
        tether::throwOutOfMemory(env);
    }
    return static_cast<jsize>(length);
}

}  // namespace nativevrl
