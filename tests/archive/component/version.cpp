// A component that tells which of two versions it is.

#include "krt/component.hpp"

/// Unique in the process, so that the loader never lets the library go.
inline int calls = 0;

KRT_FUNCTION(version) {
    ++calls;
    out.set(0, COMPONENT_VERSION);
}
