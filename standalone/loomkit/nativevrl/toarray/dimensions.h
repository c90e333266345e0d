#pragma once

#include "toarray/javakind.h"

#include <jni.h>

#include <cstddef>
#include <vector>

namespace nativevrl::JConvert {

/// Enlarges the extents in a list to those of a Java object, outermost nesting level first, and appends what the object
/// has more. Ragged arrays count with the largest extent at each level, the deepest branch setting the number of
/// levels. Null and scalars have no extents. `isChar` makes the texts of strings, numbers and other objects count, as a
/// level of their own. Returns how many elements it came by: as many as the object's own extents make where no row is
/// short or null, or fewer.
std::size_t collectDimensions(JavaKindReader& kindOf, std::vector<unsigned>& list, jobject object, bool isChar);

}  // namespace nativevrl::JConvert
