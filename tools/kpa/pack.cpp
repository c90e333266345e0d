#include "commands.h"
#include "files.h"
#include "packing.h"
#include "usageerror.h"

#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/printable.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kpa {
namespace {

struct PackOptions {
    std::string folder;
    std::string output;
    std::vector<std::string> libraries;
};

/// Platform to file.
std::map<std::string, std::string> librariesOf(const PackOptions& options) {
    std::map<std::string, std::string> libraries;
    for (const std::string& value : options.libraries) {
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

void runPack(const PackOptions& options) {
    const std::string bytes = packFolder(options.folder, librariesOf(options), options.output);
    writeFile(options.output, bytes);
    std::cout << vrlkrt::printable(options.output) << ": " << bytes.size() << " bytes\n";
}

}  // namespace

void addPack(CLI::App& tool) {
    auto options = std::make_shared<PackOptions>();
    CLI::App* command = tool.add_subcommand("pack", "make an archive of a component's folder");
    command->add_option("FOLDER", options->folder, "has component.json (name, version, functions) and other files")
        ->required()
        ->type_name("");
    command->add_option("-o,--output", options->output, "the archive to write")->required()->type_name("FILE");
    command
        ->add_option("--library", options->libraries,
                     "adds the shared object for a platform, such as linux-x86_64; once for each")
        ->allow_extra_args(false)
        ->type_name("PLATFORM=FILE");
    command->footer(
        "\nThe archive gets component.json, completed by the abi, the libraries and the SHA-256 of every file, and "
        "all\n"
        "other files below FOLDER. The same input gives the same bytes.");
    command->callback([options] { runPack(*options); });
}

}  // namespace kpa
