#pragma once

#include "commandline.h"

#include <string>
#include <vector>

namespace kpa {

/// One command of the tool: `run` gets what stands after its name, writes results to the standard output, and
/// throws UsageError for a wrong command line and another std::exception for what fails.
struct Command {
    const char* name;
    const char* summary;  ///< one line for the list of commands
    const char* help;     ///< the whole help text
    std::vector<std::string> options;
    void (*run)(const CommandLine& line);
};

void runPack(const CommandLine& line);
void runList(const CommandLine& line);
void runVerify(const CommandLine& line);
void runCall(const CommandLine& line);

}  // namespace kpa
