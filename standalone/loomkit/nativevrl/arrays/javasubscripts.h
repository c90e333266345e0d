#pragma once

#include "proxies/pinnedelements.h"

namespace nativevrl {

/// The subscripts of one native call, in Java's array, which is borrowed from the call.
using JavaSubscripts = PinnedElements<jint>;

}  // namespace nativevrl
