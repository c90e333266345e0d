#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kpa {

/// Each declares one command of the tool and what runs it. A command writes its results to the standard output. It
/// throws UsageError where words on the command line are wrong, and another std::exception for what fails.
void addPack(CLI::App& tool);
void addList(CLI::App& tool);
void addVerify(CLI::App& tool);
/// `behindMark` are the words behind "--", which the parser does not get to see; it lives as long as the tool does.
void addCall(CLI::App& tool, const std::vector<std::string>& behindMark);

}  // namespace kpa
