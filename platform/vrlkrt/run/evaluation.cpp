#include "vrlkrt/run/evaluation.h"

#include "vrlkrt/run/call.h"
#include "vrlkrt/run/results.h"
#include "vrlkrt/run/stackspace.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

/// How deep runs may nest on one thread, through components and Java alike.
constexpr int deepestNesting = 256;

std::string counted(int count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void checkInputs(const vrlComponentFunction& function, int nrhs, const qxArray* const* prhs) {
    if (nrhs < 0) {
        throw vrlBaseException(function.name + ": the number of arguments is negative: " + std::to_string(nrhs));
    }
    const bool isFixed = function.minimumInputs && function.minimumInputs == function.maximumInputs;
    const auto refuseCount = [&](const char* bound, int limit) {
        throw vrlBaseException(function.name + ": " + counted(nrhs, "argument") + " given, expected " +
                               (isFixed ? "" : bound) + std::to_string(limit));
    };
    if (nrhs < function.minimumInputs.value_or(0)) {
        refuseCount("at least ", *function.minimumInputs);
    }
    if (nrhs > function.maximumInputs.value_or(nrhs)) {
        refuseCount("at most ", *function.maximumInputs);
    }
    for (int i = 0; i < nrhs; ++i) {
        if (prhs == nullptr || prhs[i] == nullptr) {
            throw vrlBaseException(function.name + ": argument " + std::to_string(i + 1) + " is no array");
        }
    }
}

void checkOutputs(const vrlComponentFunction& function, int nlhs) {
    if (nlhs < 0) {
        throw vrlBaseException(function.name + ": the number of results is negative: " + std::to_string(nlhs));
    }
    if (nlhs > function.maximumOutputs.value_or(nlhs)) {
        throw vrlBaseException(function.name + ": " + counted(nlhs, "result") + " asked for, it gives at most " +
                               std::to_string(*function.maximumOutputs));
    }
}

void checkNesting(const std::string& function) {
    const krtCall* outer = currentCall();
    const int depth = outer == nullptr ? 0 : outer->depth;
    if (depth >= deepestNesting || !hasStackSpace()) {
        throw vrlBaseException(function + ": calls nest too deep (" + counted(depth, "call") + ")");
    }
}

/// Runs the component's code. Whatever it throws, also what no component should, ends here as the call's failure.
void enter(krtCall& call, krtEntry entry, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs) {
    const auto fail = [&](const char* identifier, const char* message) {
        call.failure = makeFailure(identifier, message, [&] { return call.stack(); });
    };
    try {
        entry(&call, nlhs, plhs, nrhs, prhs);
    } catch (const std::bad_alloc&) {
        fail("krt:memory", "out of memory");
    } catch (const std::exception& failure) {
        fail("", failure.what());
    } catch (...) {
        fail("", (call.function + " threw something that is no std::exception").c_str());
    }
}

/// Headers for the function's own use: whatever it does with them, the caller's arrays stay.
std::vector<qxArray*> borrow(int nrhs, const qxArray* const* prhs) {
    std::vector<qxArray*> copies;
    for (int i = 0; i < nrhs; ++i) {
        copies.push_back(qxCreateSharedDataCopy(prhs[i]));
        if (copies.back() == nullptr) {
            throw std::bad_alloc();
        }
    }
    return copies;
}

std::vector<qxArrayOwner> run(krtCall& call, const RunnableFunction& function, int nlhs, int nrhs,
                              const qxArray* const* prhs) {
    const RunningCall running(call);
    const qxCallScope scope;
    std::vector<qxArray*> borrowed = borrow(nrhs, prhs);
    // A function may store its first result unasked.
    std::vector<qxArray*> stored(static_cast<std::size_t>(std::max(nlhs, 1)));
    enter(call, function.entry, nlhs, stored.data(), nrhs, borrowed.data());
    if (call.failure != nullptr) {
        throw FunctionException(*call.failure);
    }
    stored.resize(static_cast<std::size_t>(nlhs));
    return takeResults(stored, {prhs, prhs + nrhs});
}

}  // namespace

std::vector<qxArrayOwner> evaluate(const std::shared_ptr<Instance>& instance, const std::string& name, int nlhs,
                                   int nrhs, const qxArray* const* prhs) {
    const RunnableFunction& function = instance->function(name);
    checkInputs(function.description, nrhs, prhs);
    checkOutputs(function.description, nlhs);
    checkNesting(name);
    krtCall call(instance, name);
    return run(call, function, nlhs, nrhs, prhs);
}

}  // namespace vrlkrt
