#pragma once

#include <string>

namespace vrlbase {

/// What the runtime was started with. Paths have their macros replaced.
struct Options {
    bool noJvm = false;
    bool noDisplay = false;
    std::string logFile;         ///< empty for none
    std::string cacheDirectory;  ///< empty for the user's own
};

/// Reads start options. Null entries are skipped. Throws vrlBaseException that names an unknown option, or one without
/// its value.
Options parseOptions(const char* const* options, unsigned count);

}  // namespace vrlbase
