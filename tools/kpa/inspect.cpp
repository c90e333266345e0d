#include "commands.h"
#include "files.h"

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/printable.h"

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>

namespace kpa {
namespace {

vrlkrt::ComponentArchive openArchive(const CommandLine& line) {
    line.expectOperands(1, 1, {"the archive"});
    return vrlkrt::ComponentArchive(std::make_shared<const std::string>(readArchiveFile(line.operands[0])));
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

}  // namespace

void runList(const CommandLine& line) {
    const vrlkrt::ComponentArchive archive = openArchive(line);
    const vrlkrt::Manifest& manifest = archive.manifest();
    std::cout << manifest.name << " " << manifest.version << " (abi " << manifest.abi << ")\n"
              << "archive sha256 " << archive.digest() << "\n";
    listFunctions(manifest);
    std::cout << "libraries:\n";
    for (const auto& library : manifest.libraries) {
        std::cout << "  " << library.first << "  " << library.second << "\n";
    }
    std::cout << "files:\n";
    for (const auto& file : archive.files()) {
        std::cout << std::right << std::setw(12) << file.second << "  " << file.first << "\n";
    }
}

void runVerify(const CommandLine& line) {
    const vrlkrt::ComponentArchive archive = openArchive(line);
    archive.requireAbi();
    archive.verify();
    std::uint64_t bytes = 0;
    for (const auto& file : archive.files()) {
        bytes += file.second;
    }
    const std::size_t count = archive.files().size();
    std::cout << vrlkrt::printable(line.operands[0]) << ": whole (" << count << (count == 1 ? " file, " : " files, ")
              << bytes << " bytes)\n";
}

}  // namespace kpa
