#pragma once

#include "vrlkrt/run/instance.h"

#include <map>
#include <string>

namespace vrlkrt {

/// Functions that the runtime gives every component: krt.functions and krt.info.
std::map<std::string, RunnableFunction> builtinFunctions();

}  // namespace vrlkrt
