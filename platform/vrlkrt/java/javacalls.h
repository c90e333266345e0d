#pragma once

#include "qx/qx.h"
#include "vrlbase/library.h"

#include <string>

namespace vrlkrt {

/// Calls a public method of a wrapped Java object, on any thread, by way of the class loader of `library`. The result
/// belongs to the call that runs on this thread, or to the caller outside of one. Throws vrlBaseException with the text
/// of the Java exception when the method fails, which is not left pending; other std::exceptions for what can't cross.
qxArray* callJavaMethod(vrlLibrary library, const qxArray* object, const std::string& method, int nrhs,
                        qxArray* const* prhs);

}  // namespace vrlkrt
