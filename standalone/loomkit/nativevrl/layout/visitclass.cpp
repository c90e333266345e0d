#include "layout/visitclass.h"

#include <stdexcept>
#include <string>

namespace nativevrl {

namespace {

/// Name of a class that is known to have no primitive elements; null for any other.
const char* nonPrimitiveName(qxClassID id) {
    switch (id) {
        case qxCELL_CLASS:
            return "qxCELL_CLASS";
        case qxSTRUCT_CLASS:
            return "qxSTRUCT_CLASS";
        case qxOPAQUE_CLASS:
            return "qxOPAQUE_CLASS";
        case qxOBJECT_CLASS:
            return "qxOBJECT_CLASS";
        default:
            return nullptr;
    }
}

}  // namespace

void refuseClass(qxClassID id, PrimitiveVisitor family) {
    const char* name = nonPrimitiveName(id);
    if (name == nullptr) {
        throw std::runtime_error("unrecognized qxArray class id: " + std::to_string(static_cast<int>(id)));
    }
    const std::string refusal = family == PrimitiveVisitor::data
                                    ? "attempt to apply primitive data visitor to non-primitive type "
                                    : "attempt to apply primitive type visitor to non-primitive type ";
    throw std::logic_error(refusal + name);
}

}  // namespace nativevrl
