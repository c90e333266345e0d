#include "layout/refuseclass.h"

#include <stdexcept>
#include <string>

namespace nativevrl {

namespace {

struct Refusal {
    qxClassID id;
    const char* byData;
    const char* byType;
};

constexpr Refusal refusals[] = {
    {qxCELL_CLASS, "attempt to apply primitive data visitor to non-primitive type qxCELL_CLASS",
     "attempt to apply primitive type visitor to non-primitive type qxCELL_CLASS"},
    {qxSTRUCT_CLASS, "attempt to apply primitive data visitor to non-primitive type qxSTRUCT_CLASS",
     "attempt to apply primitive type visitor to non-primitive type qxSTRUCT_CLASS"},
    {qxOPAQUE_CLASS, "attempt to apply primitive data visitor to non-primitive type qxOPAQUE_CLASS",
     "attempt to apply primitive type visitor to non-primitive type qxOPAQUE_CLASS"},
    {qxOBJECT_CLASS, "attempt to apply primitive data visitor to non-primitive type qxOBJECT_CLASS",
     "attempt to apply primitive type visitor to non-primitive type qxOBJECT_CLASS"},
};

}  // namespace

void refuseClass(qxClassID id, PrimitiveVisitor family) {
    for (const Refusal& refusal : refusals) {
        if (refusal.id == id) {
            throw std::logic_error(family == PrimitiveVisitor::data ? refusal.byData : refusal.byType);
        }
    }
    throw std::runtime_error("unrecognized qxArray class id: " + std::to_string(static_cast<int>(id)));
}

}  // namespace nativevrl
