#include "codepage.h"

#include <langinfo.h>
#include <locale.h>

#include <atomic>
#include <mutex>

namespace basix {

namespace {

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

bool isAscii(const std::string& codePage) { return codePage == "ANSI_X3.4-1968" || codePage == "US-ASCII"; }

/// The locale that the process has set, or where it has set none, the one of its environment. Bare ASCII is what a
/// process without a locale reports. All text of the runtime is UTF-8 then, which extends it.
std::string localeCodePage() {
    std::string name = nl_langinfo(CODESET);
    if (isAscii(name)) {
        if (const locale_t environment = newlocale(LC_CTYPE_MASK, "", nullptr)) {
            name = nl_langinfo_l(CODESET, environment);
            freelocale(environment);
        }
    }
    return isAscii(name) ? "UTF-8" : name;
}

/// Only code pages that extend ASCII by characters of two bytes or so have lead bytes in the sense of the path rules;
/// UTF-8 is none of them, and neither are those that keep a state or have units wider than a byte.
std::array<bool, 256> leadBytes(const Converters& converters) {
    std::array<bool, 256> leads{};
    const bool isUtf8 = converters.decode("\xE2\x82\xAC") == u"\u20AC";
    if (isUtf8 || converters.decode("A") != u"A") {
        return leads;
    }
    for (std::size_t byte = 0x80; byte < leads.size(); ++byte) {
        leads[byte] = converters.isLead(static_cast<unsigned char>(byte));
    }
    return leads;
}

struct ThreadView {
    unsigned number = 0;
    std::optional<Converters> converters;
    std::array<bool, 256> leads{};
};

void refresh(ThreadView& view) {
    Selection& chosen = selection();
    const std::lock_guard<std::mutex> lock(chosen.mutex);
    view.number = chosen.number.load(std::memory_order_relaxed);
    view.converters.emplace(chosen.name.empty() ? localeCodePage() : chosen.name);
    view.leads = leadBytes(*view.converters);
}

}  // namespace

CodePage currentCodePage() {
    thread_local ThreadView view;
    if (view.number != selection().number.load(std::memory_order_acquire)) {
        refresh(view);
    }
    return {*view.converters, view.leads};
}

bool selectCodePage(const char* name) {
    if (name != nullptr && !Converters(name).areThere()) {
        return false;
    }
    Selection& chosen = selection();
    const std::lock_guard<std::mutex> lock(chosen.mutex);
    chosen.name = name == nullptr ? "" : name;
    chosen.number.fetch_add(1, std::memory_order_release);
    return true;
}

}  // namespace basix
