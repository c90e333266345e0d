#pragma once

/// What the layers above the base use of it: the log, the cache folder, and macros in paths.

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// Appends a text to the log file; without one it is dropped. Null is fine. Safe on any thread; never throws.
void vrlWriteLog(const char* text);
/// The same for a text in pieces, none of them null, which nothing comes between.
void vrlWriteLog(std::initializer_list<const char*> pieces);

/// A text of the caller's (UTF-8) as a message quotes it: cut when it is long.
std::string vrlShortText(std::string_view text);

/// Folders under which components may be extracted, the best first: the one of -cachedir alone, or else one of the
/// user's own and after it the one for a user without a home. Not created here; one at least.
std::vector<std::string> vrlGetCacheDirectories();

/// Gives `$(name)` in a path a meaning, in place of an earlier one. Without effect when either is null or the name
/// empty, and when there is no memory for it: the log tells so then.
void vrlSetPathMacro(const char* name, const char* path);
/// The path with every known `$(name)` replaced, once; unknown ones stay.
std::string vrlExpandPathMacros(const std::string& path);
/// A path as the file system is to get it. Text of Java may write a character as a pair of surrogates of three bytes
/// each; the result has the one of four bytes in its place.
std::string vrlFileSystemPath(std::string path);
