#include "codepage.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace basix {

namespace {

struct CloseConverter {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using ConverterPtr = std::unique_ptr<UConverter, CloseConverter>;

/// The chosen name; empty for the locale's. The number changes with every choice, so that threads notice.
struct Selection {
    std::mutex mutex;
    std::string name;
    std::atomic<unsigned> number{1};
};

/// Left to the process's end: threads may print while static objects go.
Selection& selection() {
    static Selection& instance = *new Selection;
    return instance;
}

/// Bare ASCII is what a process without a locale reports. All text of the runtime is UTF-8 then, which extends it.
std::string localeCodePage() {
    const char* name = ucnv_getDefaultName();
    return name == nullptr || ucnv_compareNames(name, "US-ASCII") == 0 ? "UTF-8" : name;
}

ConverterPtr openConverter(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    ConverterPtr converter(ucnv_open(name.c_str(), &status));
    if (U_FAILURE(status)) {
        return nullptr;
    }
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return U_FAILURE(status) ? nullptr : std::move(converter);
}

/// Only code pages of the double-byte kind have lead bytes in the sense of the path rules; UTF-8 is none of them.
std::array<bool, 256> leadBytes(const UConverter* converter) {
    std::array<bool, 256> leads{};
    if (converter == nullptr || ucnv_getType(converter) != UCNV_MBCS) {
        return leads;
    }
    UBool starters[256] = {};
    UErrorCode status = U_ZERO_ERROR;
    ucnv_getStarters(converter, starters, &status);
    for (std::size_t byte = 0; U_SUCCESS(status) && byte < leads.size(); ++byte) {
        leads[byte] = starters[byte] != 0;
    }
    return leads;
}

struct ThreadView {
    unsigned number = 0;
    ConverterPtr converter;
    std::array<bool, 256> leads{};
};

void refresh(ThreadView& view) {
    Selection& chosen = selection();
    const std::lock_guard<std::mutex> lock(chosen.mutex);
    view.number = chosen.number.load(std::memory_order_relaxed);
    view.converter = openConverter(chosen.name.empty() ? localeCodePage() : chosen.name);
    view.leads = leadBytes(view.converter.get());
}

}  // namespace

CodePage currentCodePage() {
    thread_local ThreadView view;
    if (view.number != selection().number.load(std::memory_order_acquire)) {
        refresh(view);
    }
    return {view.converter.get(), view.leads};
}

bool selectCodePage(const char* name) {
    if (name != nullptr && (*name == '\0' || openConverter(name) == nullptr)) {
        return false;
    }
    Selection& chosen = selection();
    const std::lock_guard<std::mutex> lock(chosen.mutex);
    chosen.name = name == nullptr ? "" : name;
    chosen.number.fetch_add(1, std::memory_order_release);
    return true;
}

}  // namespace basix
