#pragma once

#include <sstream>

namespace nativevrl {

/// States what the code around relies on. A failed check composes its description, where a debugger can see it,
/// and goes on: it never stops the call.
inline void stateInvariant(bool holds, const char* expression, const char* file, int line) {
    if (!holds) {
        std::ostringstream description;
        description << expression << ' ' << file << ':' << line;
    }
}

}  // namespace nativevrl
