#include "similarnames.h"

#include <algorithm>
#include <cctype>
#include <numeric>
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

/// Insertions, removals and replacements that lead from one text to the other.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::vector<std::string> similarNames(const std::string& name, const std::vector<vrlComponentFunction>& functions) {
    std::vector<std::pair<std::size_t, std::string>> candidates;
    const std::string wanted = lowerCase(name);
    for (const vrlComponentFunction& function : functions) {
        if (wanted.size() > longestName || function.name.size() > longestName) {
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
