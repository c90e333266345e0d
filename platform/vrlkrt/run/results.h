#pragma once

#include "qx/arrayowner.h"

#include <vector>

namespace vrlkrt {

/// Takes what a function stored as its results into arrays of the caller's, null where it stored none. A result that
/// is an input or an earlier result, or shares storage with one anywhere in its cells and fields, is copied deep;
/// any other keeps its storage. The stored arrays stay with the call's scope. Throws std::bad_alloc.
std::vector<qxArrayOwner> takeResults(const std::vector<qxArray*>& stored, const std::vector<const qxArray*>& inputs);

}  // namespace vrlkrt
