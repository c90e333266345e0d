#pragma once

#include "vrlkrt/archive/extractedcomponent.h"

#include <string>
#include <vector>

namespace vrlkrt {

/// Names of functions that somebody who wrote `name` may have meant, the most similar first; at most three.
std::vector<std::string> similarNames(const std::string& name, const std::vector<vrlComponentFunction>& functions);

}  // namespace vrlkrt
