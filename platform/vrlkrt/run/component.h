#pragma once

#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/print/output.h"
#include "vrlkrt/run/componentlibrary.h"

#include <boost/shared_ptr.hpp>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vrlkrt {

/// A function that can be run: one of the component's own, or one that the runtime gives every component.
struct RunnableFunction {
    vrlComponentFunction description;
    krtEntry entry = nullptr;
};

/// What an instance runs: the component's library with its functions, and the way out for its text. Held by the
/// instance and by every evaluation that is under way, so an ended instance's code stays until the last one returns.
/// The print handlers go with it.
class LoadedComponent {
public:
    /// Loads the library and resolves every function. Throws vrlBaseException that names what is missing.
    LoadedComponent(void* handle, boost::shared_ptr<vrlExtractedComponent> extracted, PrintHandlers handlers);
    ~LoadedComponent();
    LoadedComponent(const LoadedComponent&) = delete;
    LoadedComponent& operator=(const LoadedComponent&) = delete;

    void* handle() const noexcept { return handle_; }
    const std::string& name() const noexcept { return extracted_->name; }
    const vrlExtractedComponent& description() const noexcept { return *extracted_; }
    const std::shared_ptr<Output>& output() const noexcept { return output_; }
    const std::shared_ptr<ComponentLibrary>& library() const noexcept { return library_; }

    /// Throws vrlBaseException that names the component and functions of similar names.
    const RunnableFunction& function(const std::string& name) const;

private:
    void* handle_;
    boost::shared_ptr<vrlExtractedComponent> extracted_;
    std::shared_ptr<Output> output_;
    std::shared_ptr<ComponentLibrary> library_;
    std::map<std::string, RunnableFunction> functions_;
};

}  // namespace vrlkrt
