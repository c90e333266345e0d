#pragma once

#include "krt/component.h"
#include "vrlkrt/run/failure.h"
#include "vrlkrt/run/instance.h"

#include <memory>
#include <string>
#include <vector>

/// One run of a function, on the thread and for the time of it. Want of memory costs lines of the stack and nothing
/// else.
struct krtCall {
    using Line = Norvane::vrl::vrlTAVRIXStackLine;

    std::shared_ptr<vrlkrt::Instance> instance;
    std::string function;
    vrlkrt::FailureHold failure;  ///< set when the function is to fail
    krtCall* outer = nullptr;     ///< the run that this thread is in besides
    int depth = 1;                ///< of this run among those of the thread

    krtCall(std::shared_ptr<vrlkrt::Instance> of, const std::string& name);

    /// Opens a frame. Null texts are "".
    void enter(const char* frameFunction, const char* file, int line) noexcept;
    /// Closes the innermost frame; the function's own stays. Its line stays too when an exception closes it.
    void leave(bool unwinding) noexcept;
    /// Where the innermost frame stands. A null file changes nothing.
    void mark(const char* file, int line) noexcept;
    /// The lines of a failure that happens now, innermost first. Throws std::bad_alloc.
    std::vector<Line> stack() const;

private:
    std::vector<Line> frames_;   ///< open ones, outermost first
    std::vector<Line> unwound_;  ///< closed by the exception that passes, innermost first
    int unrecorded_ = 0;         ///< open frames, inside of the others, that there was no memory for
};

namespace vrlkrt {

/// Makes a call the innermost one of this thread for as long as it lives.
class RunningCall {
public:
    explicit RunningCall(krtCall& call) noexcept;
    ~RunningCall();
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
};

/// The innermost run on this thread; null outside of any.
krtCall* currentCall() noexcept;

/// The last part of a path: where a component was built is nobody's business. Null is "".
std::string sourceName(const char* path);

}  // namespace vrlkrt
