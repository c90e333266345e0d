// Functions whose results are, hold or share what they were given.

#include "krt/component.hpp"

namespace {

qxArray* pair(qxArray* first, qxArray* second) {
    qxArray* cell = krt::checked(qxCreateCellMatrix(1, 2));
    qxSetCell(cell, 0, first);
    qxSetCell(cell, 1, second);
    return cell;
}

}  // namespace

KRT_FUNCTION(identity) { out.set(0, in(0, "x")); }

KRT_FUNCTION(shared_copy) { out.array(0, qxCreateSharedDataCopy(in(0, "x").array())); }

/// Input 1 in two slots, by its very header.
KRT_FUNCTION(pair_of_input) {
    qxArray* x = krt::toArray(in(0, "x"));
    out.array(0, pair(x, x));
}

KRT_FUNCTION(pair_of_copies) {
    const qxArray* x = in(0, "x").array();
    out.array(0, pair(qxCreateSharedDataCopy(x), qxCreateSharedDataCopy(x)));
}

/// The element of a cell that was given, alone and in a new cell.
KRT_FUNCTION(element) { out.set(0, in(0, "c").cell()[0]); }

KRT_FUNCTION(element_in_cell) {
    qxArray* element = krt::toArray(in(0, "c").cell()[0]);
    out.array(0, pair(element, element));
}

KRT_FUNCTION(same_twice) {
    qxArray* made = krt::toArray(7.0);
    out.array(0, made);
    out.array(1, made);
}

/// A cell, and an element of it.
KRT_FUNCTION(cell_and_element) {
    qxArray* made = krt::toArray(7.0);
    out.array(0, pair(made, nullptr));
    out.array(1, made);
}

KRT_FUNCTION(element_of_temporary) {
    qxArray* made = krt::toArray(7.0);
    pair(made, nullptr);
    out.array(0, made);
}

/// Ends its own inputs, which is not its business.
KRT_FUNCTION(destroy_inputs) { qxDestroyArray(krt::toArray(in(0, "x"))); }
