#pragma once

#include "krt/component.h"
#include "vrlbase/exceptions.h"

#include <atomic>
#include <string>
#include <vector>

/// A failure of a component function. Shared by counting: components hold it through the C interface.
struct krtFailure {
    std::string identifier;
    std::string message;
    std::vector<Norvane::vrl::vrlTAVRIXStackLine> stack;  ///< innermost first
    std::atomic<int> holders{1};

    krtFailure(std::string failureIdentifier, std::string failureMessage,
               std::vector<Norvane::vrl::vrlTAVRIXStackLine> lines);
};

namespace vrlkrt {

/// What an evaluation ends with when its function failed: the identifier goes along, for a component that called the
/// function and looks at it.
class FunctionException : public Norvane::vrl::vrlBaseException {
public:
    explicit FunctionException(const krtFailure& failure);
    const std::string& identifier() const noexcept { return identifier_; }

private:
    std::string identifier_;
};

}  // namespace vrlkrt
