#include "vrlkrt/vrlkrt.h"

#include "vrlbase/operation.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/componentinfo.h"
#include "vrlkrt/java/integration.h"
#include "vrlkrt/print/defaultoutput.h"
#include "vrlkrt/run/call.h"
#include "vrlkrt/run/evaluation.h"
#include "vrlkrt/run/instances.h"
#include "vrlkrt/unload.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace {

using Norvane::vrl::vrlBaseException;
using vrlbase::operation;
using vrlkrt::Instance;
using vrlkrt::instances;

/// A library that starts the runtime may never open a component, and go with its class loader all the same.
void onStart(vrlLibrary library) noexcept { vrlkrt::prepareIntegration(library); }

void onStop(vrlLibrary library) noexcept {
    instances().endAll(library);
    vrlkrt::yieldDefaultHandlers(library);
}

[[maybe_unused]] const bool isHooked = (vrlSetStartAndStop({onStart, onStop}), true);

/// An instance may be the first that is asked of the runtime.
void startRuntime(vrlLibrary library) {
    vrlStartFor(library);
    vrlkrt::prepareIntegration(library);
    vrlkrt::preferDefaultHandlers(library);
}

void yieldWithoutInstances(vrlLibrary library) noexcept {
    if (instances().newest(library) == nullptr) {
        vrlkrt::yieldDefaultHandlers(library);
    }
}

void* createInstance(vrlLibrary owner, const vrlkrt::PrintHandlers& handlers,
                     const vrlExtractedComponentFactory& factory) {
    if (factory.empty()) {
        throw vrlBaseException("there is no way to the component");
    }
    void* handle = instances().newHandle();
    instances().add(std::make_shared<Instance>(handle, owner, factory(), handlers));
    return handle;
}

/// Wraps Java objects for every instance, and has nothing of any: so whoever got it from a handle may keep it.
class ObjectWrapper : public krtInstance {};

}  // namespace

bool vrlIsStandaloneMode() { return true; }

void vrlAddCanonicalPathMacro(const char* name, const char* path) { vrlSetPathMacro(name, path); }

void vrlForgetLibrary(const void* code) noexcept {
    const vrlLibrary library = vrlLibraryAt(code);
    vrlForgetInBase(library);
    vrlkrt::dropDefaultHandlers(library);
    vrlkrt::forgetIntegration(library);
}

void* vrlInitializeComponentInstance(const vrlPrintHandler& first, const vrlPrintHandler& second,
                                     const vrlExtractedComponentFactory& factory) {
    const vrlLibrary caller = vrlLibraryAt(__builtin_return_address(0));
    return operation([&] {
        startRuntime(caller);
        try {
            return createInstance(caller, {first, second}, factory);
        } catch (...) {
            yieldWithoutInstances(caller);
            throw;
        }
    });
}

void vrlTerminateInstanceInternal(void* handle) {
    operation([&] { yieldWithoutInstances(instances().end(handle)); });
}

bool vrlWaitForFiguresToDieInternal(void* handle, bool) {
    return operation([&] {
        // Components draw nothing, so no figure is open.
        instances().find(handle);
        return true;
    });
}

void* vrlGetActiveHKRTINSTANCE() {
    const vrlLibrary caller = vrlLibraryAt(__builtin_return_address(0));
    const krtCall* call = vrlkrt::currentCall();
    return call == nullptr ? instances().newest(caller) : call->instance->handle();
}

krtInstance* vrlHandleToKrtInstancePtr(void* handle) {
    static ObjectWrapper& wrapper = *new ObjectWrapper;
    return operation([&]() -> krtInstance* {
        instances().find(handle);
        return &wrapper;
    });
}

void vrlLoomkitFeval(void* handle, const char* name, int nlhs, qxArray** plhs, int nrhs, qxArray** prhs) {
    operation([&] {
        const std::shared_ptr<Instance> instance = instances().find(handle);
        if (name == nullptr) {
            throw vrlBaseException("component " + instance->name() + ": the name of the function is null");
        }
        if (plhs == nullptr && nlhs > 0) {
            throw vrlBaseException(vrlShortText(name) + ": there is no place for the results");
        }
        std::vector<qxArrayOwner> results = vrlkrt::evaluate(instance, name, nlhs, nrhs, prhs);
        std::transform(results.begin(), results.end(), plhs, [](qxArrayOwner& result) { return result.release(); });
    });
}

vrlComponentInfo vrlGetComponentInfo(void* handle) {
    return operation([&] {
        const std::shared_ptr<Instance> instance = instances().find(handle);
        const vrlExtractedComponent& description = instance->description();
        vrlComponentInfo info{description.name, description.version, description.abi, {}};
        for (const vrlComponentFunction& function : description.functions) {
            info.functions.push_back({function.name, function.help});
        }
        return info;
    });
}

int vrlcppArrayToString(const qxArray* array, char** text) try {
    if (array == nullptr || text == nullptr) {
        return -1;
    }
    *text = nullptr;
    const std::string shown = qxToText(array);
    *text = static_cast<char*>(std::malloc(shown.size() + 1));
    if (*text == nullptr) {
        return -1;
    }
    std::memcpy(*text, shown.c_str(), shown.size() + 1);
    return 0;
} catch (const std::bad_alloc&) {
    return -1;
}

void vrlcppFreeString(char* text) { std::free(text); }
