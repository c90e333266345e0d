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

namespace {

using Lines = std::vector<Norvane::vrl::vrlTAVRIXStackLine>;

Lines linesOf(const krtFailure& failure) {
    Lines lines = failure.stack;
    if (!failure.identifier.empty()) {
        lines.push_back({failure.identifier, "", Norvane::vrl::vrlIdentifierLine});
    }
    return lines;
}

}  // namespace

FunctionException::FunctionException(const krtFailure& failure)
    : vrlBaseException(failure.message, linesOf(failure)), identifier_(failure.identifier) {}

Lines FunctionException::frames() const {
    Lines lines = getStack();
    if (!identifier_.empty()) {
        lines.pop_back();
    }
    return lines;
}

}  // namespace vrlkrt
