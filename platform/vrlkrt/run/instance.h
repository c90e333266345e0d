#pragma once

#include "vrlbase/library.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/print/output.h"
#include "vrlkrt/run/componentlibrary.h"

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <map>
#include <memory>
#include <string>

/// A component's way out for text: an instance's, or the default one. Shared by counting. The first hold is the
/// instance's, so that a component gets its printer without taking memory.
struct krtPrinter {
    std::shared_ptr<vrlkrt::Output> output;             ///< null for the default one
    std::shared_ptr<vrlkrt::ComponentLibrary> library;  ///< stays mapped for whoever prints; null likewise
    std::atomic<int> holders{1};
};

namespace vrlkrt {

/// Ends one hold on a printer.
struct EndPrinterHold {
    void operator()(krtPrinter* printer) const noexcept {
        if (printer->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete printer;
        }
    }
};

/// A function that can be run: one of the component's own, or one that the runtime gives every component.
struct RunnableFunction {
    vrlComponentFunction description;
    krtEntry entry = nullptr;
};

/// A component instance: the component's library with its functions, and the way out for its text. Held by the registry
/// until it is ended and by every evaluation that is under way, so an ended instance's code stays until the last one
/// returns. The print handlers go with it.
class Instance {
public:
    /// Loads the component's library and resolves every function. Throws vrlBaseException that names what is missing.
    Instance(void* handle, vrlLibrary owner, boost::shared_ptr<vrlExtractedComponent> extracted,
             PrintHandlers handlers);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    void* handle() const noexcept { return handle_; }
    /// Who made the instance.
    vrlLibrary owner() const noexcept { return owner_; }
    const std::string& name() const noexcept { return extracted_->name; }
    const vrlExtractedComponent& description() const noexcept { return *extracted_; }
    const Output& output() const noexcept { return *printer_->output; }
    const std::shared_ptr<ComponentLibrary>& library() const noexcept { return printer_->library; }
    /// Borrowed; whoever keeps it counts itself in.
    krtPrinter* printer() const noexcept { return printer_.get(); }

    /// Throws vrlBaseException that names the component and functions of similar names.
    const RunnableFunction& function(const std::string& name) const;

private:
    void* handle_;
    vrlLibrary owner_;
    boost::shared_ptr<vrlExtractedComponent> extracted_;
    std::unique_ptr<krtPrinter, EndPrinterHold> printer_;
    std::map<std::string, RunnableFunction> functions_;
};

}  // namespace vrlkrt
