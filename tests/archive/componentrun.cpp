#include "componentrun.h"

#include "values.h"

#include "vrlkrt/vrlkrt.h"

#include <mutex>

namespace {

/// Appends what is printed, from whichever thread.
vrlPrintHandler appendTo(std::string& text) {
    return [&text](const char* printed) {
        static std::mutex mutex;
        const std::lock_guard<std::mutex> lock(mutex);
        text += printed;
        return 0;
    };
}

}  // namespace

std::string shownText(const qxArrayOwner& array) {
    const std::string text = qxToText(array.get());
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

ComponentRun::ComponentRun(const std::string& archive) {
    std::string bytes = readText(archive);
    const auto stream = vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size()));
    handle_ = vrlInitializeComponentInstance(
        appendTo(errors), appendTo(output),
        vrlMakeDirectoryExtractedComponentFactory(vrlMakeKpaStreamExtractor(stream),
                                                  dsPathString_<dsMBCSSafeString>((folder_ / "component").c_str())));
}

ComponentRun::~ComponentRun() { vrlTerminateInstanceInternal(handle_); }

std::vector<qxArrayOwner> ComponentRun::call(const std::string& function, int nlhs,
                                             const std::vector<const qxArray*>& inputs) {
    std::vector<qxArray*> prhs;
    for (const qxArray* input : inputs) {
        prhs.push_back(const_cast<qxArray*>(input));
    }
    std::vector<qxArray*> plhs(static_cast<std::size_t>(nlhs));
    vrlLoomkitFeval(handle_, function.c_str(), nlhs, plhs.data(), static_cast<int>(prhs.size()), prhs.data());
    return std::vector<qxArrayOwner>(plhs.begin(), plhs.end());
}

std::vector<qxArrayOwner> ComponentRun::callWith(const std::string& function, int nlhs,
                                                 const std::vector<std::string>& words) {
    std::vector<qxArrayOwner> inputs;
    for (const std::string& word : words) {
        inputs.push_back(kpa::parseValue(word));
    }
    std::vector<const qxArray*> borrowed;
    for (const qxArrayOwner& input : inputs) {
        borrowed.push_back(input.get());
    }
    return call(function, nlhs, borrowed);
}
