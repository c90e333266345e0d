#pragma once

#include "krt/component.h"
#include "qx/arrayowner.h"
#include "vrlkrt/run/component.h"
#include "vrlkrt/run/failure.h"

#include <memory>
#include <string>
#include <vector>

/// One run of a function, on the thread and for the time of it.
struct krtCall {
    std::shared_ptr<vrlkrt::LoadedComponent> component;
    std::string function;
    std::vector<Norvane::vrl::vrlTAVRIXStackLine> frames;   ///< open ones, outermost first
    std::vector<Norvane::vrl::vrlTAVRIXStackLine> unwound;  ///< closed by the exception that passes, innermost first
    std::unique_ptr<krtFailure> failure;                    ///< set when the function is to fail
    krtCall* outer = nullptr;                               ///< the run that this thread is in besides
    int depth = 1;

    /// Where the innermost frame stands. A null file changes nothing.
    void mark(const char* file, int line);
    /// The lines of a failure that happens now, innermost first.
    std::vector<Norvane::vrl::vrlTAVRIXStackLine> stack() const;
};

namespace vrlkrt {

/// Runs a function. The results, as many as the caller asked for and null where the function gave none, are
/// free-standing and share no storage with an input, nor with one another. Throws FunctionException when the function
/// fails, vrlBaseException for what is wrong with the call, vrlInternalException for what the runtime did not foresee.
std::vector<qxArrayOwner> evaluate(const std::shared_ptr<LoadedComponent>& component, const std::string& function,
                                   int nlhs, int nrhs, const qxArray* const* prhs);

/// The innermost run on this thread; null outside of any.
krtCall* currentCall();

}  // namespace vrlkrt
