#include "vrlkrt/print/output.h"
#include "vrlkrt/run/evaluation.h"

#include <atomic>
#include <utility>

/// A component's own hold on its way out for text. Shared by counting.
struct krtPrinter {
    std::shared_ptr<vrlkrt::Output> output;             ///< null for the default one
    std::shared_ptr<vrlkrt::ComponentLibrary> library;  ///< stays mapped for whoever prints; null likewise
    std::atomic<int> holders{1};
};

namespace {

const vrlkrt::Output& outputOf(const krtCall* call) {
    return call == nullptr ? vrlkrt::defaultOutput() : *call->component->output();
}

const vrlkrt::Output& outputOf(const krtPrinter* printer) {
    return printer->output == nullptr ? vrlkrt::defaultOutput() : *printer->output;
}

/// Whether this thread runs a function of that library, so that the library stays until the function returns.
bool runsCodeOf(const std::shared_ptr<vrlkrt::ComponentLibrary>& library) {
    for (const krtCall* call = vrlkrt::currentCall(); call != nullptr; call = call->outer) {
        if (call->component->library() == library) {
            return true;
        }
    }
    return false;
}

}  // namespace

void krtPrint(krtCall* call, const char* text) { outputOf(call).print(vrlkrt::Channel::ordinary, text); }

void krtWarn(krtCall* call, const char* message) { vrlkrt::printWarning(outputOf(call), message); }

krtPrinter* krtGetPrinter(krtCall* call) {
    auto printer = std::make_unique<krtPrinter>();
    if (call != nullptr) {
        printer->output = call->component->output();
        printer->library = call->component->library();
    }
    return printer.release();
}

krtPrinter* krtSharePrinter(krtPrinter* printer) {
    printer->holders.fetch_add(1, std::memory_order_relaxed);
    return printer;
}

void krtReleasePrinter(krtPrinter* printer) {
    if (printer == nullptr) {
        return;
    }
    // The component's thread goes on in the library's code after this.
    if (printer->library != nullptr && !runsCodeOf(printer->library)) {
        printer->library->pin();
    }
    if (printer->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete printer;
    }
}

void krtPrinterPrint(krtPrinter* printer, const char* text) {
    outputOf(printer).print(vrlkrt::Channel::ordinary, text);
}

void krtPrinterWarn(krtPrinter* printer, const char* message) { vrlkrt::printWarning(outputOf(printer), message); }
