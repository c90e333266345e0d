#include "vrlkrt/run/failure.h"

#include <utility>

krtFailure::krtFailure(std::string failureIdentifier, std::string failureMessage,
                       std::vector<Norvane::vrl::vrlTAVRIXStackLine> lines)
    : identifier(std::move(failureIdentifier)), message(std::move(failureMessage)), stack(std::move(lines)) {}

namespace vrlkrt {

FunctionException::FunctionException(const krtFailure& failure)
    : vrlBaseException(failure.message, failure.stack), identifier_(failure.identifier) {}

}  // namespace vrlkrt

krtFailure* krtShareFailure(krtFailure* failure) {
    failure->holders.fetch_add(1, std::memory_order_relaxed);
    return failure;
}

void krtReleaseFailure(krtFailure* failure) {
    if (failure != nullptr && failure->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete failure;
    }
}

const char* krtFailureMessage(const krtFailure* failure) { return failure->message.c_str(); }

const char* krtFailureIdentifier(const krtFailure* failure) { return failure->identifier.c_str(); }
