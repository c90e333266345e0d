#pragma once

namespace vrlkrt {

/// Whether this thread's stack has room for another run of a function. Java threads have small stacks, and running out
/// of one inside native code ends the process.
bool hasStackSpace();

}  // namespace vrlkrt
