#include "commands.h"
#include "files.h"
#include "librarycheck.h"

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/printable.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace kpa {
namespace {

vrlkrt::ComponentArchive openArchive(const std::string& file) {
    return vrlkrt::ComponentArchive(std::make_shared<const std::string>(readArchiveFile(file)));
}

void listFunctions(const vrlkrt::Manifest& manifest) {
    std::size_t width = 0;
    for (const vrlComponentFunction& function : manifest.functions) {
        width = std::max(width, function.name.size());
    }
    std::cout << "functions:\n";
    for (const vrlComponentFunction& function : manifest.functions) {
        std::cout << "  " << std::left << std::setw(static_cast<int>(width)) << function.name;
        std::cout << (function.help.empty() ? "" : "  ") << vrlkrt::printable(function.help) << "\n";
    }
}

void runList(const std::string& file) {
    const vrlkrt::ComponentArchive archive = openArchive(file);
    const vrlkrt::Manifest& manifest = archive.manifest();
    std::cout << manifest.name << " " << manifest.version << " (abi " << manifest.abi << ")\n"
              << "archive sha256 " << archive.digest() << "\n";
    listFunctions(manifest);
    std::cout << "libraries:\n";
    for (const auto& library : manifest.libraries) {
        std::cout << "  " << library.first << "  " << library.second << "\n";
    }
    std::cout << "files:\n";
    for (const auto& entry : archive.files()) {
        std::cout << std::right << std::setw(12) << entry.second << "  " << entry.first << "\n";
    }
}

void runVerify(const std::string& file) {
    const vrlkrt::ComponentArchive archive = openArchive(file);
    archive.requireAbi();
    archive.verify();
    const std::vector<std::string> unknown = requireFunctions(archive);
    std::uint64_t bytes = 0;
    for (const auto& entry : archive.files()) {
        bytes += entry.second;
    }
    const std::size_t count = archive.files().size();
    std::cout << vrlkrt::printable(file) << ": whole (" << count << (count == 1 ? " file, " : " files, ") << bytes
              << " bytes)\n";
    for (const std::string& platform : unknown) {
        std::cout << "The library for " << platform << " is no ELF file: its functions were not looked for.\n";
    }
}

/// A command that looks into one archive.
void addInspection(CLI::App& tool, const char* name, const char* summary, const char* details,
                   void (*run)(const std::string& file)) {
    auto file = std::make_shared<std::string>();
    CLI::App* command = tool.add_subcommand(name, summary);
    command->add_option("FILE.kpa", *file, "the archive")->required()->type_name("");
    command->footer(details);
    command->callback([file, run] { run(*file); });
}

}  // namespace

void addList(CLI::App& tool) {
    addInspection(
        tool, "list", "show what an archive holds",
        "\nShows name, version and abi of the component, the archive's SHA-256, the functions with their help,\n"
        "the libraries and the files with their sizes. Nothing is unpacked or run: see verify.",
        runList);
}

void addVerify(CLI::App& tool) {
    addInspection(
        tool, "verify", "check that an archive is whole",
        "\nUnpacks every file and compares it with its SHA-256, and checks the abi and that the libraries define\n"
        "the functions. The one for this platform is loaded for that, in a process of its own, so code that it\n"
        "runs when it is loaded is run. Libraries of platforms that have no ELF files are named as not looked\n"
        "into. What is not whole is named, and the exit code is 1. That an archive is whole says nothing about\n"
        "who made it.",
        runVerify);
}

}  // namespace kpa
