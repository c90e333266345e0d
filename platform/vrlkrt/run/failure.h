#pragma once

#include "krt/component.h"
#include "vrlbase/exceptions.h"

#include <atomic>
#include <memory>
#include <new>
#include <string>
#include <vector>

/// A failure of a component function. Shared by counting: components hold it through the C interface. It doesn't
/// change once it is made.
struct krtFailure {
    std::string identifier;
    std::string message;
    std::vector<Norvane::vrl::vrlTAVRIXStackLine> stack;  ///< innermost first
    std::atomic<int> holders{1};

    krtFailure(std::string failureIdentifier, std::string failureMessage,
               std::vector<Norvane::vrl::vrlTAVRIXStackLine> lines);
};

namespace vrlkrt {

struct EndFailureHold {
    void operator()(krtFailure* failure) const noexcept { krtReleaseFailure(failure); }
};
/// One hold on a failure.
using FailureHold = std::unique_ptr<krtFailure, EndFailureHold>;

/// "krt:memory", "out of memory", without a stack: taking it takes no memory.
FailureHold outOfMemoryFailure() noexcept;

/// A failure with the lines that `stack` gives, or the one above when there is no memory for it. Null texts are "".
template <typename Stack>
FailureHold makeFailure(const char* identifier, const char* message, const Stack& stack) {
    try {
        return FailureHold(
            new krtFailure(identifier == nullptr ? "" : identifier, message == nullptr ? "" : message, stack()));
    } catch (const std::bad_alloc&) {
        return outOfMemoryFailure();
    }
}

/// What an evaluation ends with when its function failed: the identifier goes along, for a component that called the
/// function and looks at it. Callers who see a vrlBaseException find it in the last line of the stack.
class FunctionException : public Norvane::vrl::vrlBaseException {
public:
    explicit FunctionException(const krtFailure& failure);
    const std::string& identifier() const noexcept { return identifier_; }
    /// The stack without the line of the identifier.
    std::vector<Norvane::vrl::vrlTAVRIXStackLine> frames() const;

private:
    std::string identifier_;
};

}  // namespace vrlkrt
