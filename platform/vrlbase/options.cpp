#include "options.h"

#include "vrlbase/exceptions.h"
#include "vrlbase/runtime.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace vrlbase {

namespace {

using Norvane::vrl::vrlBaseException;

struct Flag {
    const char* name;
    bool Options::*target;
};
constexpr Flag flags[] = {{"-nojvm", &Options::noJvm}, {"-nodisplay", &Options::noDisplay}};

struct Setting {
    const char* name;
    const char* value;
    std::string Options::*target;
};
constexpr Setting settings[] = {{"-logfile", "FILE", &Options::logFile},
                                {"-cachedir", "DIR", &Options::cacheDirectory}};

template <typename Table>
auto find(const Table& table, std::string_view name) {
    return std::find_if(std::begin(table), std::end(table), [&](const auto& entry) { return name == entry.name; });
}

void checkCacheDirectory(const std::string& directory) {
    std::error_code failure;
    const auto status = std::filesystem::status(vrlFileSystemPath(directory), failure);
    if (std::filesystem::exists(status) && !std::filesystem::is_directory(status)) {
        throw vrlBaseException("option -cachedir: " + directory + " is not a folder");
    }
}

}  // namespace

Options parseOptions(const char* const* options, unsigned count) {
    std::vector<std::string_view> given;
    for (unsigned i = 0; options != nullptr && i < count; ++i) {
        if (options[i] != nullptr) {
            given.emplace_back(options[i]);
        }
    }
    Options parsed;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (const auto* flag = find(flags, given[i]); flag != std::end(flags)) {
            parsed.*flag->target = true;
            continue;
        }
        const auto* setting = find(settings, given[i]);
        if (setting == std::end(settings)) {
            throw vrlBaseException("unknown option \"" + vrlShortText(given[i]) +
                                   "\"; known are -nojvm, -nodisplay, -logfile FILE and -cachedir DIR");
        }
        if (i + 1 == given.size() || given[i + 1].empty() || given[i + 1].front() == '-') {
            throw vrlBaseException("option " + std::string(given[i]) + " lacks its value " + setting->value);
        }
        parsed.*setting->target = vrlExpandPathMacros(std::string(given[++i]));
    }
    checkCacheDirectory(parsed.cacheDirectory);
    return parsed;
}

}  // namespace vrlbase
