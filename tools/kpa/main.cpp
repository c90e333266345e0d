#include "commands.h"

#include "vrlbase/vrlbase.h"
#include "vrlkrt/archive/printable.h"

#include <algorithm>
#include <iostream>

namespace {

using kpa::Command;
using kpa::UsageError;

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"pack",
         "make an archive of a component's folder",
         "usage: kpa pack FOLDER -o FILE.kpa [--library PLATFORM=FILE]...\n\n"
         "Makes a component archive of FOLDER: its component.json (name, version, functions), completed by the abi,\n"
         "the libraries and the SHA-256 of every file, and all other files below it. The same input gives the same\n"
         "bytes.\n\n"
         "  -o, --output FILE          the archive to write\n"
         "  --library PLATFORM=FILE    adds the shared object for a platform, such as linux-x86_64; once for each\n"
         "  -h, --help                 this text\n",
         {"--output", "--library"},
         kpa::runPack},
        {"list",
         "show what an archive holds",
         "usage: kpa list FILE.kpa\n\n"
         "Shows name, version and abi of the component, the archive's SHA-256, the functions with their help, the\n"
         "libraries and the files with their sizes. Contents are not unpacked: see verify.\n\n"
         "  -h, --help    this text\n",
         {},
         kpa::runList},
        {"verify",
         "check that an archive is whole",
         "usage: kpa verify FILE.kpa\n\n"
         "Unpacks every file in memory and compares it with its SHA-256, and checks the abi. Ends with 1, naming the\n"
         "entry and what is wrong with it, where an archive is not whole.\n\n"
         "  -h, --help    this text\n",
         {},
         kpa::runVerify},
        {"call",
         "run a function of a component",
         "usage: kpa call FILE.kpa FUNCTION [VALUE]... [--nargout N]\n\n"
         "Runs a function and shows its results. What it prints goes to the standard output, its warnings to the\n"
         "standard error. A VALUE is\n"
         "  3.5   -1e3   Inf   2-1i     a number\n"
         "  [1 2; 3 4]                  a matrix: elements apart by blanks or commas, rows by semicolons\n"
         "  true   false                a logical\n"
         "  @name                       a handle of a function of the component\n"
         "  'text'   text               text; quoted where it would be a number otherwise\n\n"
         "  --nargout N   how many results to ask for; 1 unless given, or 0 of a function that gives none\n"
         "  --            everything after it is a VALUE, also where it starts with '-'\n"
         "  -h, --help    this text\n",
         {"--nargout"},
         kpa::runCall},
    };
    return table;
}

void showHelp(std::ostream& stream) {
    stream << "usage: kpa COMMAND ...\n\nPacks, inspects and runs component archives.\n\n";
    for (const Command& command : commands()) {
        stream << "  " << command.name << std::string(8 - std::string(command.name).size(), ' ') << command.summary
               << "\n";
    }
    stream << "\nkpa COMMAND --help tells more. Exit codes: 0 done, 1 failed, 2 wrong command line.\n";
}

int usageFailure(const std::string& problem, const std::string& command) {
    std::cerr << "kpa" << command << ": " << vrlkrt::printableLines(problem) << "\nTry 'kpa" << command
              << " --help'.\n";
    return exitUsage;
}

int runCommand(const Command& command, const std::vector<std::string>& words) {
    const std::string prefix = std::string("kpa ") + command.name + ": ";
    try {
        const kpa::CommandLine line = kpa::parseCommandLine(words, command.options, {{"-o", "--output"}});
        if (line.help) {
            std::cout << command.help;
            return 0;
        }
        command.run(line);
        return 0;
    } catch (const UsageError& error) {
        return usageFailure(error.what(), std::string(" ") + command.name);
    } catch (const Norvane::vrl::vrlBaseException& error) {
        std::cerr << prefix << vrlkrt::printableLines(error.what()) << "\n";
        for (const std::string& line : createStackStrings(error.getStack())) {
            std::cerr << "    " << vrlkrt::printable(line) << "\n";
        }
    } catch (const std::exception& error) {
        std::cerr << prefix << vrlkrt::printableLines(error.what()) << "\n";
    }
    return exitFailure;
}

int run(const std::vector<std::string>& words) {
    if (words.empty()) {
        showHelp(std::cerr);
        return exitUsage;
    }
    if (words[0] == "help" && words.size() > 1) {
        return run({words[1], "--help"});
    }
    if (words[0] == "-h" || words[0] == "--help" || words[0] == "help") {
        showHelp(std::cout);
        return 0;
    }
    for (const Command& command : commands()) {
        if (words[0] == command.name) {
            return runCommand(command, {words.begin() + 1, words.end()});
        }
    }
    return usageFailure("there is no command '" + words[0] + "'", "");
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
