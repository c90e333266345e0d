#include "vrlkrt/print/defaultoutput.h"
#include "vrlkrt/run/call.h"

#include <memory>

namespace {

/// For text that belongs to no instance. Its first hold is never ended.
krtPrinter& defaultPrinter() {
    alignas(krtPrinter) static std::byte storage[sizeof(krtPrinter)];
    static krtPrinter& printer = *new (storage) krtPrinter;
    return printer;
}

const vrlkrt::Output& outputOf(const krtCall* call) {
    return call == nullptr ? vrlkrt::defaultOutput() : call->instance->output();
}

const vrlkrt::Output& outputOf(const krtPrinter* printer) {
    return printer->output == nullptr ? vrlkrt::defaultOutput() : *printer->output;
}

/// Whether this thread runs a function of that library, so that the library stays until the function returns.
bool runsCodeOf(const std::shared_ptr<vrlkrt::ComponentLibrary>& library) {
    for (const krtCall* call = vrlkrt::currentCall(); call != nullptr; call = call->outer) {
        if (call->instance->library() == library) {
            return true;
        }
    }
    return false;
}

}  // namespace

void krtPrint(krtCall* call, const char* text) { outputOf(call).print(vrlkrt::Channel::ordinary, text); }

void krtWarn(krtCall* call, const char* message) { vrlkrt::printWarning(outputOf(call), message); }

krtPrinter* krtGetPrinter(krtCall* call) {
    return krtSharePrinter(call == nullptr ? &defaultPrinter() : call->instance->printer());
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
    vrlkrt::EndPrinterHold()(printer);
}

void krtPrinterPrint(krtPrinter* printer, const char* text) {
    outputOf(printer).print(vrlkrt::Channel::ordinary, text);
}

void krtPrinterWarn(krtPrinter* printer, const char* message) { vrlkrt::printWarning(outputOf(printer), message); }
