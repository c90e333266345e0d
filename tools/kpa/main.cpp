#include "commands.h"
#include "usageerror.h"

#include "krt/component.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/archive/printable.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

void declare(CLI::App& tool, const std::vector<std::string>& behindMark) {
    tool.set_version_flag("--version", "kpa " KPA_VERSION ", abi " + std::to_string(KRT_ABI));
    tool.require_subcommand(1);
    tool.footer("\nkpa COMMAND --help tells more. Exit codes: 0 done, 1 failed, 2 wrong command line.");
    kpa::addPack(tool);
    kpa::addList(tool);
    kpa::addVerify(tool);
    kpa::addCall(tool, behindMark);
}

int usageFailure(const std::string& problem, const std::string& name) {
    std::cerr << name << ": " << vrlkrt::printableLines(problem) << "\nTry '" << name << " --help'.\n";
    return exitUsage;
}

int failure(const std::exception& error, const std::string& name) {
    std::cerr << name << ": " << vrlkrt::printableLines(error.what()) << "\n";
    return exitFailure;
}

/// Runs the command that the words name. `name` gets the name of the tool and of its command.
int parse(CLI::App& tool, std::vector<std::string> words, std::string& name) {
    const auto named = [&](const CLI::App* command) { return command->get_name() == words.front(); };
    if (!tool.get_subcommands(named).empty()) {
        name += " " + words.front();
    } else if (words.front().empty() || words.front().front() != '-') {
        return usageFailure("there is no command '" + words.front() + "'", name);
    }
    std::reverse(words.begin(), words.end());
    try {
        tool.parse(std::move(words));
    } catch (const CLI::Success& shown) {
        return tool.exit(shown);
    } catch (const CLI::ParseError& error) {
        return usageFailure(error.what(), name);
    }
    return 0;
}

/// Takes what stands behind "--" off the words of a call: values, which the parser would take for the tool's.
std::vector<std::string> takeBehindMark(std::vector<std::string>& words) {
    const auto mark = std::find(words.begin(), words.end(), "--");
    if (mark == words.end() || words.front() != "call") {
        return {};
    }
    std::vector<std::string> behind(mark + 1, words.end());
    words.erase(mark, words.end());
    return behind;
}

int run(std::vector<std::string> words) {
    CLI::App tool("Packs, inspects and runs component archives.", "kpa");
    const std::vector<std::string> behindMark = takeBehindMark(words);
    declare(tool, behindMark);
    if (words.empty()) {
        std::cerr << tool.help();
        return exitUsage;
    }
    if (words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    std::string name = "kpa";
    try {
        return parse(tool, std::move(words), name);
    } catch (const kpa::UsageError& error) {
        return usageFailure(error.what(), name);
    } catch (const Norvane::vrl::vrlBaseException& error) {
        const int code = failure(error, name);
        for (const std::string& line : createStackStrings(error.getStack())) {
            std::cerr << "    " << vrlkrt::printable(line) << "\n";
        }
        return code;
    } catch (const std::exception& error) {
        return failure(error, name);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int code = run({argv + std::min(argc, 1), argv + argc});
    if (!std::cout.flush()) {
        std::cerr << "kpa: can't write to the standard output\n";
        return exitFailure;
    }
    return code;
}
