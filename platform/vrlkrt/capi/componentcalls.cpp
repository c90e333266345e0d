#include "jzi/jzi.h"
#include "vrlbase/operation.h"
#include "vrlkrt/java/javacalls.h"
#include "vrlkrt/run/call.h"
#include "vrlkrt/run/evaluation.h"

#include <string>

namespace {

using Norvane::vrl::vrlBaseException;

/// The failure of something that a call did: its own stack, if it had one, and then the call's.
krtFailure* failureOf(const krtCall* call, const std::exception& failure) {
    const auto* function = dynamic_cast<const vrlkrt::FunctionException*>(&failure);
    const auto stack = [&] {
        std::vector<krtCall::Line> lines;
        if (function != nullptr) {
            lines = function->frames();
        } else if (const auto* known = dynamic_cast<const vrlBaseException*>(&failure)) {
            lines = known->getStack();
        }
        if (call != nullptr) {
            const std::vector<krtCall::Line> outer = call->stack();
            lines.insert(lines.end(), outer.begin(), outer.end());
        }
        return lines;
    };
    return vrlkrt::makeFailure(function == nullptr ? "" : function->identifier().c_str(), failure.what(), stack)
        .release();
}

/// Runs what a call asks for, from the line where it stands; null on success.
template <typename Body>
krtFailure* attempt(krtCall* call, const char* file, int line, Body body) {
    krtMarkLine(call, file, line);
    try {
        vrlbase::operation(body);
        return nullptr;
    } catch (const std::exception& failure) {
        return failureOf(call, failure);
    }
}

void runFunction(const krtCall* call, const std::string& name, int nlhs, qxArray** plhs, int nrhs,
                 qxArray* const* prhs) {
    if (call == nullptr) {
        throw vrlBaseException(name + ": a function can't be called on a thread that the component started");
    }
    std::vector<qxArrayOwner> results = vrlkrt::evaluate(call->instance, name, nlhs, nrhs, prhs);
    for (std::size_t i = 0; i < results.size(); ++i) {
        plhs[i] = results[i].release();
        if (plhs[i] != nullptr) {
            qxSetArrayScope(plhs[i], qxCALL_SCOPE);
        }
    }
}

}  // namespace

krtFailure* krtCallFunction(krtCall* call, const char* name, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs,
                            const char* file, int line) {
    return attempt(call, file, line, [&] { runFunction(call, name == nullptr ? "" : name, nlhs, plhs, nrhs, prhs); });
}

krtFailure* krtCallHandle(krtCall* call, const qxArray* handle, int nlhs, qxArray** plhs, int nrhs,
                          qxArray* const* prhs, const char* file, int line) {
    return attempt(call, file, line, [&] {
        if (handle == nullptr || qxGetClassID(handle) != qxFUNCTION_CLASS) {
            throw vrlBaseException("what is called is no function handle");
        }
        runFunction(call, qxGetFunctionName(handle), nlhs, plhs, nrhs, prhs);
    });
}

krtFailure* krtCallJava(krtCall* call, const qxArray* object, const char* method, int nrhs, qxArray* const* prhs,
                        qxArray** result, const char* file, int line) {
    vrlLibrary owner = call == nullptr ? nullptr : call->instance->owner();
    return attempt(call, file, line, [&] {
        *result = vrlkrt::callJavaMethod(owner, object, method == nullptr ? "" : method, nrhs, prhs);
    });
}

int krtIsJavaObject(const qxArray* array) { return ojIsJavaArray(array) ? 1 : 0; }
