#include "vrlkrt/print/defaultoutput.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace vrlkrt {

namespace {

/// The handlers of a library.
struct Claim {
    vrlLibrary library;
    std::shared_ptr<const PrintHandlers> handlers;
};

struct DefaultOutput {
    Output output;
    std::mutex mutex;
    std::vector<Claim> claims;  ///< the first is the one in use
};

/// Never ended: the handlers hold references of a virtual machine that may be gone when static objects go. In a place
/// of its own, so that text may be printed without memory.
DefaultOutput& state() {
    alignas(DefaultOutput) static std::byte storage[sizeof(DefaultOutput)];
    static DefaultOutput& instance = *new (storage) DefaultOutput;
    return instance;
}

/// Changes the claims by a function that gets them and the place of the library's, their end when it has none. What it
/// takes out goes after the lock.
template <typename Change>
void change(vrlLibrary library, Change make) {
    DefaultOutput& current = state();
    std::shared_ptr<const PrintHandlers> old;
    const std::lock_guard<std::mutex> lock(current.mutex);
    const auto own = std::find_if(current.claims.begin(), current.claims.end(),
                                  [library](const Claim& claim) { return claim.library == library; });
    old = own == current.claims.end() ? nullptr : own->handlers;
    make(current.claims, own);
    current.output.use(current.claims.empty() ? nullptr : current.claims.front().handlers);
}

}  // namespace

const Output& defaultOutput() { return state().output; }

void setDefaultHandlers(vrlLibrary library, PrintHandlers handlers) {
    auto ours = std::make_shared<const PrintHandlers>(std::move(handlers));
    change(library, [&](auto& claims, auto own) {
        if (own == claims.end()) {
            claims.push_back(Claim{library, std::move(ours)});
        } else {
            own->handlers = std::move(ours);
        }
    });
}

void dropDefaultHandlers(vrlLibrary library) noexcept {
    change(library, [](auto& claims, auto own) {
        if (own != claims.end()) {
            claims.erase(own);
        }
    });
}

void preferDefaultHandlers(vrlLibrary library) noexcept {
    change(library, [](auto& claims, auto own) {
        if (own != claims.end()) {
            std::rotate(claims.begin(), own, own + 1);
        }
    });
}

void yieldDefaultHandlers(vrlLibrary library) noexcept {
    change(library, [](auto& claims, auto own) {
        if (own != claims.end()) {
            std::rotate(own, own + 1, claims.end());
        }
    });
}

}  // namespace vrlkrt

void vrlSetDefaultPrintHandlers(const vrlPrintHandler& first, const vrlPrintHandler& second) {
    vrlLibrary caller = vrlLibraryAt(__builtin_return_address(0));
    try {
        vrlkrt::setDefaultHandlers(caller, {first, second});
    } catch (const std::bad_alloc&) {
        vrlkrt::dropDefaultHandlers(caller);
    }
}
