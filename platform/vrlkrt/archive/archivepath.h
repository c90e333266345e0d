#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vrlkrt {

constexpr std::size_t maxEntryPathLength = 1024;
constexpr std::size_t maxEntryComponentLength = 255;

/// What is wrong with one component of an entry's path; "" when nothing is.
inline std::string entryComponentProblem(std::string_view component) {
    if (component.empty()) {
        return "its path has an empty component";
    }
    if (component == "." || component == "..") {
        return "its path has the component '" + std::string(component) + "'";
    }
    if (component.size() > maxEntryComponentLength) {
        return "its path has a component of more than " + std::to_string(maxEntryComponentLength) + " characters";
    }
    return "";
}

/// What is wrong with the path of an archive entry, worded to follow "entry 'x': "; "" when it is safe.
/// A safe path is relative, stays below the folder that it is extracted to on every platform, and is made of
/// printable ASCII characters, so that it names the same file under every locale.
inline std::string entryPathProblem(std::string_view path) {
    if (path.empty()) {
        return "its path is empty";
    }
    if (path.size() > maxEntryPathLength) {
        return "its path has more than " + std::to_string(maxEntryPathLength) + " characters";
    }
    for (const char c : path) {
        if (c == '\\') {
            return "its path has a backslash";
        }
        if (c == ':') {
            return "its path has a colon";
        }
        if (c < ' ' || c > '~') {
            return "its path has a character that is not printable ASCII";
        }
    }
    if (path.front() == '/') {
        return "its path is absolute";
    }
    while (true) {
        const std::size_t slash = path.find('/');
        std::string problem = entryComponentProblem(path.substr(0, slash));
        if (!problem.empty() || slash == std::string_view::npos) {
            return problem;
        }
        path.remove_prefix(slash + 1);
    }
}

}  // namespace vrlkrt
