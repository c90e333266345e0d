#include "commandline.h"

#include <algorithm>
#include <cstdlib>

namespace kpa {
namespace {

bool isNumber(const std::string& word) {
    char* end = nullptr;
    std::strtod(word.c_str(), &end);
    return end != word.c_str();
}

bool isOption(const std::string& word) { return word.size() > 1 && word.front() == '-' && !isNumber(word); }

}  // namespace

std::string CommandLine::single(const std::string& option, const std::string& otherwise) const {
    const auto found = options.find(option);
    if (found == options.end()) {
        return otherwise;
    }
    if (found->second.size() > 1) {
        throw UsageError("the option " + option + " is given twice");
    }
    return found->second.front();
}

void CommandLine::expectOperands(std::size_t least, std::size_t most, const std::vector<std::string>& names) const {
    if (operands.size() < least) {
        throw UsageError(names[operands.size()] + " is missing");
    }
    if (operands.size() > most) {
        throw UsageError("'" + operands[most] + "' is one word too many");
    }
}

CommandLine parseCommandLine(const std::vector<std::string>& words, const std::vector<std::string>& options,
                             const std::map<std::string, std::string>& shortNames) {
    CommandLine line;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--") {
            line.operands.insert(line.operands.end(), word + 1, words.end());
            break;
        }
        if (*word == "-h" || *word == "--help") {
            line.help = true;
            continue;
        }
        if (!isOption(*word)) {
            line.operands.push_back(*word);
            continue;
        }
        const std::size_t equals = word->find('=');
        std::string name = word->substr(0, equals);
        if (const auto longName = shortNames.find(name); longName != shortNames.end()) {
            name = longName->second;
        }
        if (std::find(options.begin(), options.end(), name) == options.end()) {
            throw UsageError("there is no option " + name + "; a value that starts with '-' goes after '--'");
        }
        if (equals == std::string::npos && word + 1 == words.end()) {
            throw UsageError("the option " + name + " needs a value");
        }
        line.options[name].push_back(equals == std::string::npos ? *++word : word->substr(equals + 1));
    }
    return line;
}

}  // namespace kpa
