#pragma once

#include "pathkit/dspathstring.h"

#include <string>

/// A path in the form of this platform: each separator of the normal form becomes a slash. A second byte of a
/// two-byte character stays as it is. Then `$(name)` of known path macros is replaced, and pairs of surrogates are
/// joined.
std::string vrlPlatformPath(const dsPathString_<dsMBCSSafeString>& path);
