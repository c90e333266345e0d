#include "vrlkrt/run/call.h"

#include <new>
#include <string_view>
#include <utility>

namespace {

thread_local krtCall* innermost = nullptr;

}  // namespace

krtCall::krtCall(std::shared_ptr<vrlkrt::Instance> of, const std::string& name)
    : instance(std::move(of)), function(name), frames_{{name, "", 0}} {}

void krtCall::enter(const char* frameFunction, const char* file, int line) noexcept {
    unwound_.clear();
    try {
        if (unrecorded_ == 0) {
            frames_.push_back({frameFunction == nullptr ? "" : frameFunction, vrlkrt::sourceName(file), line});
            return;
        }
    } catch (const std::bad_alloc&) {
        // Counted as those inside of it.
    }
    ++unrecorded_;
}

void krtCall::leave(bool unwinding) noexcept {
    if (!unwinding) {
        unwound_.clear();
    }
    if (unrecorded_ > 0) {
        --unrecorded_;
        return;
    }
    if (frames_.size() < 2) {
        return;
    }
    try {
        if (unwinding) {
            unwound_.push_back(std::move(frames_.back()));
        }
    } catch (const std::bad_alloc&) {
        unwound_.clear();
    }
    frames_.pop_back();
}

void krtCall::mark(const char* file, int line) noexcept {
    if (file == nullptr || unrecorded_ > 0) {
        return;
    }
    unwound_.clear();
    try {
        frames_.back().file = vrlkrt::sourceName(file);
        frames_.back().line = line;
    } catch (const std::bad_alloc&) {
        frames_.back().line = 0;
    }
}

std::vector<krtCall::Line> krtCall::stack() const {
    std::vector<Line> lines = unwound_;
    lines.insert(lines.end(), frames_.rbegin(), frames_.rend());
    return lines;
}

namespace vrlkrt {

RunningCall::RunningCall(krtCall& call) noexcept {
    call.outer = innermost;
    call.depth = innermost == nullptr ? 1 : innermost->depth + 1;
    innermost = &call;
}

RunningCall::~RunningCall() { innermost = innermost->outer; }

krtCall* currentCall() noexcept { return innermost; }

std::string sourceName(const char* path) {
    const std::string_view whole = path == nullptr ? "" : path;
    return std::string(whole.substr(whole.find_last_of('/') + 1));
}

}  // namespace vrlkrt
