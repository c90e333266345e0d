#pragma once

#include "qx/arrayowner.h"
#include "vrlkrt/run/instance.h"

#include <memory>
#include <string>
#include <vector>

namespace vrlkrt {

/// Runs a function. The results, as many as the caller asked for and null where the function gave none, are
/// free-standing and share no storage with an input, nor with one another. Throws FunctionException when the function
/// fails, vrlBaseException for what is wrong with the call, std::bad_alloc.
std::vector<qxArrayOwner> evaluate(const std::shared_ptr<Instance>& instance, const std::string& function, int nlhs,
                                   int nrhs, const qxArray* const* prhs);

}  // namespace vrlkrt
