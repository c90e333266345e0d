#pragma once

#include "qx/qx.h"

namespace nativevrl {

/// Two families of visitors of primitive elements, which differ in how their refusal is worded.
enum class PrimitiveVisitor { data, type };

/// Refuses a class without primitive elements: throws std::logic_error for a cell, struct, opaque or object array,
/// std::runtime_error for any other id.
[[noreturn]] void refuseClass(qxClassID id, PrimitiveVisitor family);

}  // namespace nativevrl
