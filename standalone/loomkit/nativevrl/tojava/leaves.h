#pragma once

/// What the innermost level of a nested Java array can be. A leaf is a class with
///
///     using Element                        what the source's elements are read as
///     static className()                   class name of a row, as the levels above compose their own from it
///     Leaf(env, length)                    makes a row
///     write(at, begin, count)              the elements from `at` on; a row is written from its front to its end, in
///                                          one call or several, and a row without elements in one call with none
///     detach()                             the finished row, a local reference of the caller
///
/// and stands in this list. Each throws a tether::Exception where Java has no room for it.

#include "tojava/boxedleaf.h"
#include "tojava/primitiveleaf.h"
#include "tojava/slotleaf.h"
#include "tojava/stringleaf.h"
