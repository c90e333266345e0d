#include "vrlkrt/run/instance.h"

#include "vrlbase/vrlbase.h"
#include "vrlkrt/run/builtins.h"
#include "vrlkrt/run/similarnames.h"

#include <utility>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

boost::shared_ptr<vrlExtractedComponent> checkedComponent(boost::shared_ptr<vrlExtractedComponent> extracted) {
    if (!extracted) {
        throw vrlBaseException("there is no component to make an instance of");
    }
    if (extracted->abi != KRT_ABI) {
        throw vrlBaseException("component " + extracted->name + " was built for interface version " +
                               std::to_string(extracted->abi) + ", this runtime has version " +
                               std::to_string(KRT_ABI));
    }
    return extracted;
}

}  // namespace

Instance::Instance(void* handle, vrlLibrary owner, boost::shared_ptr<vrlExtractedComponent> extracted,
                   PrintHandlers handlers)
    : handle_(handle),
      owner_(owner),
      extracted_(checkedComponent(std::move(extracted))),
      printer_(new krtPrinter{
          std::make_shared<Output>(std::move(handlers)),
          std::make_shared<ComponentLibrary>(extracted_->name, extracted_->libraryFile, extracted_->libraryState)}),
      functions_(builtinFunctions()) {
    for (const vrlComponentFunction& function : extracted_->functions) {
        krtEntry entry = library()->entry(function.symbol);
        if (entry == nullptr) {
            throw vrlBaseException("component " + extracted_->name + ": function " + function.name +
                                   " has the symbol " + function.symbol + ", which is no function of " +
                                   extracted_->libraryFile);
        }
        if (!functions_.try_emplace(function.name, RunnableFunction{function, entry}).second) {
            throw vrlBaseException("component " + extracted_->name + ": there are two functions " + function.name);
        }
    }
}

Instance::~Instance() { printer_->output->use(nullptr); }

const RunnableFunction& Instance::function(const std::string& name) const {
    const auto found = functions_.find(name);
    if (found != functions_.end()) {
        return found->second;
    }
    std::string message = "component " + extracted_->name + " has no function \"" + vrlShortText(name) + "\"";
    std::string separator = "; did you mean ";
    for (const std::string& similar : similarNames(name, extracted_->functions)) {
        message += separator + similar;
        separator = " or ";
    }
    throw vrlBaseException(message);
}

}  // namespace vrlkrt
