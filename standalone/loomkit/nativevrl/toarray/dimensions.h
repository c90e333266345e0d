#pragma once

#include <jni.h>

#include <cstddef>
#include <vector>

namespace nativevrl::JConvert {

/// Appends the extents of a Java object to an empty list, outermost nesting level first: of ragged arrays the largest
/// at each level, the deepest branch setting the number of levels. Null and scalars have none. `isChar` makes the
/// texts of strings, numbers and other objects count, as a level of their own. Returns how many elements it came by:
/// as many as the extents make where no row is short or null, or fewer.
std::size_t collectDimensions(JNIEnv* env, std::vector<unsigned>& list, jobject object, bool isChar);

/// Raises the entries of `list` from `start` on to those of `other`, and appends what it has more.
void mergeDimensions(std::vector<unsigned>& list, std::size_t start, const std::vector<unsigned>& other);

}  // namespace nativevrl::JConvert
