#include "librarycheck.h"

#include "elfsymbols.h"
#include "files.h"

#include "vrlkrt/archive/extraction.h"
#include "vrlkrt/run/componentlibrary.h"

#include "vrlbase/exceptions.h"

#include <elf.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>

namespace kpa {
namespace {

namespace fs = std::filesystem;

/// A fresh folder among those for temporary files, gone with the object.
class ScratchFolder {
public:
    ScratchFolder() : path_((fs::temp_directory_path() / "kpa-verify-XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), "can't make a folder " + path_);
        }
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string item(const char* name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// The functions of a manifest that `defines` does not know the symbol of, a line each; "" when it knows all.
std::string missingFunctions(const vrlkrt::Manifest& manifest, const std::string& library,
                             const std::function<bool(const std::string& symbol)>& defines) {
    std::string missing;
    for (const vrlComponentFunction& function : manifest.functions) {
        if (!defines(function.symbol)) {
            missing += (missing.empty() ? "" : "\n") + ("the function " + function.name) + " has the symbol " +
                       function.symbol + ", which is no function of " + library;
        }
    }
    return missing;
}

/// What the loader and the library have to say; runs the code that a library runs when it is loaded.
std::string problemOfLoading(const vrlkrt::Manifest& manifest, const std::string& library, const std::string& file) {
    try {
        const vrlkrt::ComponentLibrary loaded(manifest.name, file);
        return missingFunctions(manifest, library,
                                [&](const std::string& symbol) { return loaded.entry(symbol) != nullptr; });
    } catch (const Norvane::vrl::vrlBaseException& failure) {
        return failure.what();
    }
}

std::string readToEnd(int descriptor) {
    std::string text;
    std::array<char, 4096> block;
    ssize_t count = 0;
    while ((count = read(descriptor, block.data(), block.size())) > 0 || (count < 0 && errno == EINTR)) {
        text.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return text;
}

std::string wordsOfEnd(int status) {
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")"
                               : "exit code " + std::to_string(WEXITSTATUS(status));
}

/// Gives what `body` gives when it is run in a process of its own, or tells how that one ended without giving it.
std::string inOwnProcess(const std::string& library, const std::function<std::string()>& body) {
    constexpr char endMark = '\0';
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "can't make a pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        dup2(STDERR_FILENO, STDOUT_FILENO);
        const std::string answer = body() + endMark;
        _exit(write(ends[1], answer.data(), answer.size()) == static_cast<ssize_t>(answer.size()) ? 0 : 1);
    }
    const int failure = errno;
    close(ends[1]);
    std::string answer = readToEnd(ends[0]);
    close(ends[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        throw std::system_error(child < 0 ? failure : errno, std::generic_category(), "can't run another process");
    }
    if (answer.empty() || answer.back() != endMark) {
        return "the library " + library + " ends the process that loads it: " + wordsOfEnd(status);
    }
    answer.pop_back();
    return answer;
}

bool isElfFile(const std::string& file) {
    std::array<char, SELFMAG> begin{};
    std::ifstream(file, std::ios::binary).read(begin.data(), begin.size());
    return std::memcmp(begin.data(), ELFMAG, SELFMAG) == 0;
}

std::string libraryProblem(const vrlkrt::Manifest& manifest, const std::string& platform, const std::string& library,
                           const std::string& folder) {
    const std::string file = folder + "/" + library;
    if (platform == vrlkrt::hostPlatform()) {
        return inOwnProcess(library, [&] { return problemOfLoading(manifest, library, file); });
    }
    const std::set<std::string> functions = definedFunctions(readFile(file, vrlkrt::ArchiveLimits().fileBytes));
    return missingFunctions(manifest, library, [&](const std::string& symbol) { return functions.count(symbol) != 0; });
}

}  // namespace

std::vector<std::string> requireFunctions(const vrlkrt::ComponentArchive& archive) {
    const ScratchFolder scratch;
    const std::string folder = scratch.item("component");
    vrlkrt::extractAll(archive, folder);
    std::vector<std::string> unknown;
    for (const auto& [platform, library] : archive.manifest().libraries) {
        if (!isElfFile(folder + "/" + library)) {
            unknown.push_back(platform);
            continue;
        }
        const std::string problem = libraryProblem(archive.manifest(), platform, library, folder);
        if (!problem.empty()) {
            throw std::runtime_error(problem);
        }
    }
    return unknown;
}

}  // namespace kpa
