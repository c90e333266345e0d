#include "commands.h"
#include "files.h"
#include "values.h"

#include "text/unicode.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/archive/archive.h"
#include "vrlkrt/vrlkrt.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <vector>

namespace kpa {
namespace {

/// The runtime, started for the time of one command.
class RunningRuntime {
public:
    RunningRuntime() {
        const char* options[] = {"-nojvm"};
        vrlInitializeApplicationImpl(options, 1);
    }
    ~RunningRuntime() { vrlTerminateApplicationImpl(); }
    RunningRuntime(const RunningRuntime&) = delete;
    RunningRuntime& operator=(const RunningRuntime&) = delete;
};

int printTo(std::ostream& stream, const char* text) {
    stream << text << std::flush;
    return stream.good() ? 0 : -1;
}

/// An instance of the component of an archive, extracted to the component cache.
class Instance {
public:
    explicit Instance(std::string bytes) {
        if (bytes.size() > INT_MAX) {
            throw std::runtime_error("the archive is too large");
        }
        const auto stream = vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size()));
        handle_ = vrlInitializeComponentInstance(
            [](const char* text) { return printTo(std::cerr, text); },
            [](const char* text) { return printTo(std::cout, text); },
            vrlMakeComponentCacheExtractedComponentFactory(vrlMakeKpaStreamExtractor(stream)));
    }
    ~Instance() { vrlTerminateInstanceInternal(handle_); }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    std::vector<qxArrayOwner> call(const std::string& function, int nargout, const std::vector<qxArrayOwner>& inputs) {
        std::vector<qxArray*> prhs;
        for (const qxArrayOwner& input : inputs) {
            prhs.push_back(input.get());
        }
        std::vector<qxArray*> plhs(static_cast<std::size_t>(nargout));
        vrlLoomkitFeval(handle_, function.c_str(), nargout, plhs.data(), static_cast<int>(prhs.size()), prhs.data());
        return std::vector<qxArrayOwner>(plhs.begin(), plhs.end());
    }

private:
    void* handle_ = nullptr;
};

/// The number of results that the option asks for; without it 1, or 0 of a function that gives none.
int nargoutOf(const CommandLine& line, const vrlkrt::Manifest& manifest) {
    constexpr long most = 1000;
    if (line.options.count("--nargout") == 0) {
        for (const vrlComponentFunction& function : manifest.functions) {
            if (function.name == line.operands[1]) {
                return std::min(1, function.maximumOutputs.value_or(1));
            }
        }
        return 1;
    }
    const std::string word = line.single("--nargout", "");
    char* end = nullptr;
    const long count = std::strtol(word.c_str(), &end, 10);
    if (word.empty() || *end != '\0' || count < 0 || count > most) {
        throw UsageError("--nargout takes a whole number from 0 to " + std::to_string(most) + ", not '" + word + "'");
    }
    return static_cast<int>(count);
}

void show(const std::vector<qxArrayOwner>& results) {
    for (std::size_t i = 0; i < results.size(); ++i) {
        if (results.size() > 1) {
            std::cout << "result " << i + 1 << ":\n";
        }
        if (!results[i]) {
            // A function may give fewer results than were asked for.
            std::cout << "(none)\n";
            continue;
        }
        // The display is modified UTF-8, which a terminal does not know.
        const std::string text = text::utf8FromUtf16(text::utf16FromUtf8(qxToText(results[i].get())));
        std::cout << text << (text.empty() || text.back() != '\n' ? "\n" : "");
    }
}

}  // namespace

void runCall(const CommandLine& line) {
    line.expectOperands(2, INT_MAX, {"the archive", "the function"});
    std::vector<qxArrayOwner> inputs;
    for (std::size_t i = 2; i < line.operands.size(); ++i) {
        inputs.push_back(parseValue(line.operands[i]));
    }
    const auto bytes = std::make_shared<const std::string>(readArchiveFile(line.operands[0]));
    const int nargout = nargoutOf(line, vrlkrt::ComponentArchive(bytes).manifest());
    const RunningRuntime runtime;
    Instance instance(*bytes);
    show(instance.call(line.operands[1], nargout, inputs));
}

}  // namespace kpa
