#include "commands.h"
#include "files.h"
#include "packing.h"

#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/printable.h"

#include <filesystem>
#include <iostream>
#include <map>

namespace kpa {
namespace {

std::map<std::string, std::string> librariesOf(const CommandLine& line) {
    std::map<std::string, std::string> libraries;
    const auto given = line.options.find("--library");
    if (given == line.options.end()) {
        return libraries;
    }
    for (const std::string& value : given->second) {
        const std::size_t equals = value.find('=');
        if (equals == std::string::npos || equals + 1 == value.size()) {
            throw UsageError("--library takes PLATFORM=FILE, not '" + value + "'");
        }
        const std::string platform = value.substr(0, equals);
        if (const std::string problem = vrlkrt::platformKeyProblem(platform); !problem.empty()) {
            throw UsageError("the platform '" + platform + "' " + problem);
        }
        if (!libraries.emplace(platform, value.substr(equals + 1)).second) {
            throw UsageError("there are two libraries for " + platform);
        }
    }
    return libraries;
}

}  // namespace

void runPack(const CommandLine& line) {
    line.expectOperands(1, 1, {"the folder of the component"});
    const std::string output = line.single("--output", "");
    if (output.empty()) {
        throw UsageError("the archive to write is missing: name it with -o FILE");
    }
    const std::string bytes = packFolder(line.operands[0], librariesOf(line), output);
    writeFile(output, bytes);
    std::cout << vrlkrt::printable(output) << ": " << bytes.size() << " bytes\n";
}

}  // namespace kpa
