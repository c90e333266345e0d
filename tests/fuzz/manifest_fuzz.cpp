// Texts of component.json: reading ends with a vrlBaseException, or with a manifest that is written and read back
// as itself.

#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/printable.h"

#include "vrlbase/exceptions.h"

#include <cstdint>
#include <cstdlib>

namespace {

template <typename Parse>
void readBack(Parse parse) {
    try {
        const vrlkrt::Manifest manifest = parse();
        const std::string text = vrlkrt::manifestText(manifest);
        if (vrlkrt::manifestText(vrlkrt::parseManifest(text)) != text) {
            std::abort();
        }
    } catch (const Norvane::vrl::vrlBaseException& refusal) {
        if (vrlkrt::printable(refusal.what()) != refusal.what()) {
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), count);
    readBack([&] { return vrlkrt::parseManifest(text); });
    readBack([&] { return vrlkrt::parseAuthorManifest(text); });
    return 0;
}
