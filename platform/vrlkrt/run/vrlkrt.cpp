#include "vrlkrt/vrlkrt.h"

#include "vrlbase/vrlbase.h"
#include "vrlkrt/componentinfo.h"
#include "vrlkrt/run/evaluation.h"
#include "vrlkrt/run/instances.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace {

using Norvane::vrl::vrlBaseException;
using vrlkrt::instances;

void endAllInstances() { instances().endAll(); }

/// An instance may be the first that is asked of the runtime.
void startRuntime() {
    vrlOnTermination(endAllInstances);
    vrlStartIfStopped();
}

}  // namespace

void* vrlInitializeComponentInstance(const vrlPrintHandler& first, const vrlPrintHandler& second,
                                     const vrlExtractedComponentFactory& factory) try {
    startRuntime();
    if (factory.empty()) {
        throw vrlBaseException("there is no way to the component");
    }
    void* handle = instances().newHandle();
    auto component = std::make_shared<vrlkrt::LoadedComponent>(handle, factory(), vrlkrt::PrintHandlers{first, second});
    instances().add(std::move(component));
    return handle;
} catch (const vrlBaseException&) {
    throw;
} catch (const std::exception& failure) {
    throw vrlBaseException(failure.what());
}

void vrlTerminateInstanceInternal(void* handle) { instances().end(handle); }

bool vrlWaitForFiguresToDieInternal(void* handle, bool) {
    // Components draw nothing, so no figure is open.
    instances().find(handle);
    return true;
}

void* vrlGetActiveHKRTINSTANCE() {
    const krtCall* call = vrlkrt::currentCall();
    return call == nullptr ? instances().newest() : call->component->handle();
}

krtInstance* vrlHandleToKrtInstancePtr(void* handle) { return instances().object(handle); }

void vrlLoomkitFeval(void* handle, const char* name, int nlhs, qxArray** plhs, int nrhs, qxArray** prhs) {
    const std::shared_ptr<vrlkrt::LoadedComponent> component = instances().find(handle);
    if (name == nullptr) {
        throw vrlBaseException("component " + component->name() + ": the name of the function is null");
    }
    if (plhs == nullptr && nlhs > 0) {
        throw vrlBaseException(std::string(name) + ": there is no place for the results");
    }
    std::vector<qxArrayOwner> results = vrlkrt::evaluate(component, name, nlhs, nrhs, prhs);
    std::transform(results.begin(), results.end(), plhs, [](qxArrayOwner& result) { return result.release(); });
}

vrlComponentInfo vrlGetComponentInfo(void* handle) {
    const std::shared_ptr<vrlkrt::LoadedComponent> component = instances().find(handle);
    const vrlExtractedComponent& description = component->description();
    vrlComponentInfo info{description.name, description.version, description.abi, {}};
    for (const vrlComponentFunction& function : description.functions) {
        info.functions.push_back({function.name, function.help});
    }
    return info;
}
