#include "vrlkrt/run/evaluation.h"

#include <string_view>

namespace {

using Line = Norvane::vrl::vrlTAVRIXStackLine;

/// The last part of a path: where a component was built is nobody's business.
std::string fileName(std::string_view path) { return std::string(path.substr(path.find_last_of('/') + 1)); }

/// A failure at a place; without a file it is wherever the frames stand, those that its exception closed included.
krtFailure* makeFailure(krtCall* call, const char* identifier, const char* message, const char* file, int line) {
    std::vector<Line> stack;
    if (call == nullptr) {
        stack.push_back({"thread of a component", fileName(file == nullptr ? "" : file), line});
    } else {
        call->mark(file, line);
        stack = call->stack();
    }
    return new krtFailure(identifier == nullptr ? "" : identifier, message == nullptr ? "" : message, std::move(stack));
}

}  // namespace

void krtCall::mark(const char* file, int line) {
    if (file != nullptr) {
        unwound.clear();
        frames.back().file = fileName(file);
        frames.back().line = line;
    }
}

std::vector<Line> krtCall::stack() const {
    std::vector<Line> lines = unwound;
    lines.insert(lines.end(), frames.rbegin(), frames.rend());
    return lines;
}

krtCall* krtCurrentCall() { return vrlkrt::currentCall(); }

const char* krtFunctionName(const krtCall* call) { return call == nullptr ? "" : call->function.c_str(); }

void krtEnterFrame(krtCall* call, const char* function, const char* file, int line) {
    if (call != nullptr) {
        call->unwound.clear();
        call->frames.push_back({function == nullptr ? "" : function, fileName(file == nullptr ? "" : file), line});
    }
}

void krtLeaveFrame(krtCall* call, int unwinding) {
    // The frame of the function itself is the runtime's.
    if (call == nullptr || call->frames.size() < 2) {
        return;
    }
    if (unwinding != 0) {
        call->unwound.push_back(call->frames.back());
    } else {
        call->unwound.clear();
    }
    call->frames.pop_back();
}

void krtMarkLine(krtCall* call, const char* file, int line) {
    if (call != nullptr) {
        call->mark(file, line);
    }
}

krtFailure* krtMakeFailure(krtCall* call, const char* identifier, const char* message, const char* file, int line) {
    return makeFailure(call, identifier, message, file, line);
}

void krtFail(krtCall* call, const char* identifier, const char* message, const char* file, int line) {
    if (call != nullptr) {
        call->failure.reset(makeFailure(call, identifier, message, file, line));
    }
}

void krtFailWith(krtCall* call, const krtFailure* failure) {
    if (call != nullptr && failure != nullptr) {
        call->failure = std::make_unique<krtFailure>(failure->identifier, failure->message, failure->stack);
    }
}
