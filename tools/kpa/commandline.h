#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace kpa {

/// The command line is wrong: what() tells what, and the tool ends with exit code 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The words after a command, sorted into options and the rest.
struct CommandLine {
    std::map<std::string, std::vector<std::string>> options;  ///< by long name, in the order given
    std::vector<std::string> operands;
    bool help = false;

    /// The one value of an option; throws UsageError when it was given twice.
    std::string single(const std::string& option, const std::string& otherwise) const;
    /// Throws UsageError unless there are from `least` to `most` operands; `names` tells them in order.
    void expectOperands(std::size_t least, std::size_t most, const std::vector<std::string>& names) const;
};

/// Every option takes a value, as "--name value" or "--name=value"; `-h` and `--help` don't. `shortNames` gives the
/// long name of a one-letter option. After "--" everything is an operand, and so is a negative number.
CommandLine parseCommandLine(const std::vector<std::string>& words, const std::vector<std::string>& options,
                             const std::map<std::string, std::string>& shortNames);

}  // namespace kpa
