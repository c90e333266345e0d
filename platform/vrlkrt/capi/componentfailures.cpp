#include "vrlkrt/run/call.h"

#include <utility>

namespace {

using vrlkrt::FailureHold;

/// A failure at a place; without a file it is wherever the frames stand, those that its exception closed included.
FailureHold failureAt(krtCall* call, const char* identifier, const char* message, const char* file, int line) {
    if (call == nullptr) {
        return vrlkrt::makeFailure(identifier, message, [=] {
            return std::vector<krtCall::Line>{{"thread of a component", vrlkrt::sourceName(file), line}};
        });
    }
    call->mark(file, line);
    return vrlkrt::makeFailure(identifier, message, [=] { return call->stack(); });
}

}  // namespace

krtCall* krtCurrentCall() { return vrlkrt::currentCall(); }

const char* krtFunctionName(const krtCall* call) { return call == nullptr ? "" : call->function.c_str(); }

void krtEnterFrame(krtCall* call, const char* function, const char* file, int line) {
    if (call != nullptr) {
        call->enter(function, file, line);
    }
}

void krtLeaveFrame(krtCall* call, int unwinding) {
    if (call != nullptr) {
        call->leave(unwinding != 0);
    }
}

void krtMarkLine(krtCall* call, const char* file, int line) {
    if (call != nullptr) {
        call->mark(file, line);
    }
}

krtFailure* krtMakeFailure(krtCall* call, const char* identifier, const char* message, const char* file, int line) {
    return failureAt(call, identifier, message, file, line).release();
}

void krtFail(krtCall* call, const char* identifier, const char* message, const char* file, int line) {
    if (call != nullptr) {
        call->failure = failureAt(call, identifier, message, file, line);
    }
}

void krtFailWith(krtCall* call, const krtFailure* failure) {
    if (call != nullptr && failure != nullptr) {
        // A failure never changes, so a hold on it is as good as a copy.
        call->failure.reset(krtShareFailure(const_cast<krtFailure*>(failure)));
    }
}

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
