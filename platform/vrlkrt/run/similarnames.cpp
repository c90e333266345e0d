#include "vrlkrt/run/similarnames.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace vrlkrt {

namespace {

/// Names longer than this are not compared: their similarity is nobody's typing error.
constexpr std::size_t longestName = 128;

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// Insertions, removals, replacements and swaps of neighbours that lead from one text to the other.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::vector<std::size_t>> steps(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = steps[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            steps[i][j] = std::min({replaced, steps[i - 1][j] + 1, steps[i][j - 1] + 1});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps.back().back();
}

}  // namespace

std::vector<std::string> similarNames(const std::string& name, const std::vector<vrlComponentFunction>& functions) {
    if (name.size() > longestName) {
        return {};
    }
    std::vector<std::pair<std::size_t, std::string>> candidates;
    const std::string wanted = lowerCase(name);
    for (const vrlComponentFunction& function : functions) {
        if (function.name.size() > longestName) {
            continue;
        }
        const std::size_t distance = editDistance(wanted, lowerCase(function.name));
        if (distance <= std::max<std::size_t>(1, function.name.size() / 3)) {
            candidates.emplace_back(distance, function.name);
        }
    }
    std::sort(candidates.begin(), candidates.end());
    candidates.resize(std::min<std::size_t>(candidates.size(), 3));
    std::vector<std::string> names;
    for (auto& [distance, candidate] : candidates) {
        names.push_back(std::move(candidate));
    }
    return names;
}

}  // namespace vrlkrt
