#include "vrlkrt/run/failure.h"

#include <cstddef>
#include <utility>

krtFailure::krtFailure(std::string failureIdentifier, std::string failureMessage,
                       std::vector<Norvane::vrl::vrlTAVRIXStackLine> lines)
    : identifier(std::move(failureIdentifier)), message(std::move(failureMessage)), stack(std::move(lines)) {}

namespace vrlkrt {

FailureHold outOfMemoryFailure() noexcept {
    // So short texts lie in the strings themselves. The first hold is never ended.
    alignas(krtFailure) static std::byte storage[sizeof(krtFailure)];
    static krtFailure& failure = *new (storage) krtFailure("krt:memory", "out of memory", {});
    return FailureHold(krtShareFailure(&failure));
}

FunctionException::FunctionException(const krtFailure& failure)
    : vrlBaseException(failure.message, failure.stack), identifier_(failure.identifier) {}

}  // namespace vrlkrt
