#pragma once

#include <unicode/ucnv.h>

#include <array>
#include <string>

namespace basix {

/// The local code page as one thread sees it: a converter of its own, since converters carry state, and the table
/// of lead bytes.
struct CodePage {
    UConverter* converter;
    const std::array<bool, 256>& leads;
};

/// The calling thread's view; `converter` is null when ICU has none for the locale. Valid until the thread asks again.
CodePage currentCodePage();

/// Makes a code page the local one; null returns to the locale's. False, with nothing changed, for an unknown name.
bool selectCodePage(const char* name);

}  // namespace basix
