#pragma once

/// Text in the local code page: the one of the process's locale unless a test or the runtime sets another.

#include <cstddef>
#include <string>

using utf16_t = char16_t;

/// UTF-16 of a text in the local code page. `length` is in bytes, -1 for up to the first NUL. The result is
/// NUL-terminated and freed with utFree; null when the text is null, malformed or memory runs out.
utf16_t* lcp_to_utf16(const char* text, int length);

/// Units before the first NUL.
std::size_t utf16_strlen(const utf16_t* text);

/// Frees what lcp_to_utf16 gave; null is fine.
void utFree(void* block);

/// Whether the byte starts a two-byte character of the local code page. Never true in UTF-8.
bool utIsMultiByteLead(unsigned char byte);

/// Makes `name` (as iconv knows it: "Shift_JIS", say) the local code page; null returns to the locale's. Returns
/// false, with nothing changed, for a name that is not known. Not to be called while others convert.
bool utSetCodePage(const char* name);

/// A UTF-8 text (plain or modified, with a surrogate pair as two three-byte sequences) in the local code page. What
/// is damaged becomes U+FFFD, and what is not in the code page the control character SUB. Empty when there is no
/// converter for the code page.
std::string utLocalText(const char* utf8);
