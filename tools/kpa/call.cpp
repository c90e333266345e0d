#include "commands.h"
#include "files.h"
#include "usageerror.h"
#include "values.h"

#include "text/unicode.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/archive/archive.h"
#include "vrlkrt/vrlkrt.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <climits>
#include <iostream>
#include <memory>
#include <string>
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
    explicit Instance(const std::string& bytes) {
        if (bytes.size() > INT_MAX) {
            throw std::runtime_error("the archive is too large");
        }
        const auto stream =
            vrlGetKpaStreamFromArraySrc(const_cast<char*>(bytes.data()), static_cast<int>(bytes.size()));
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

struct CallOptions {
    std::string archive;
    std::string function;
    int nargout = -1;  ///< -1 where it is not given
};

/// The number of results to ask for; where none is given 1, or 0 of a function that gives none.
int nargoutOf(const CallOptions& options, const vrlkrt::Manifest& manifest) {
    if (options.nargout >= 0) {
        return options.nargout;
    }
    for (const vrlComponentFunction& function : manifest.functions) {
        if (function.name == options.function) {
            return std::min(1, function.maximumOutputs.value_or(1));
        }
    }
    return 1;
}

/// The inputs of a call. Words in front of the mark that start with '-' are numbers or nothing that the command knows.
std::vector<qxArrayOwner> inputsOf(const std::vector<std::string>& words, const std::vector<std::string>& behindMark) {
    std::vector<qxArrayOwner> inputs;
    for (const std::string& word : words) {
        if (word.size() > 1 && word.front() == '-' && !isNumber(word)) {
            throw UsageError("there is no option " + word + "; a value that starts with '-' goes after '--'");
        }
        inputs.push_back(parseValue(word));
    }
    for (const std::string& word : behindMark) {
        inputs.push_back(parseValue(word));
    }
    return inputs;
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

void runCall(const CallOptions& options, const std::vector<qxArrayOwner>& inputs) {
    const auto bytes = std::make_shared<const std::string>(readArchiveFile(options.archive));
    const int nargout = nargoutOf(options, vrlkrt::ComponentArchive(bytes).manifest());
    const RunningRuntime runtime;
    Instance instance(*bytes);
    show(instance.call(options.function, nargout, inputs));
}

}  // namespace

void addCall(CLI::App& tool, const std::vector<std::string>& behindMark) {
    constexpr int mostResults = 1000;
    auto options = std::make_shared<CallOptions>();
    CLI::App* command = tool.add_subcommand("call", "run a function of a component: FILE.kpa FUNCTION [VALUE]...");
    command->add_option("FILE.kpa", options->archive, "the archive")->required()->type_name("");
    command->add_option("FUNCTION", options->function, "the function")->required()->type_name("");
    command
        ->add_option("--nargout", options->nargout,
                     "how many results to ask for; 1 unless given, or 0 of a function that gives none")
        ->check(CLI::Range(0, mostResults))
        ->type_name("N");
    // Values are what the command doesn't know: as operands of it, "[1 2]" would be taken for a list.
    command->allow_extras();
    command->footer(
        "\nRuns a function and shows its results. What it prints goes to the standard output, its warnings to the\n"
        "standard error. A VALUE is\n"
        "  3.5   -1e3   Inf   2-1i     a number\n"
        "  [1 2; 3 4]                  a matrix: elements apart by blanks or commas, rows by semicolons\n"
        "  true   false                a logical\n"
        "  @name                       a handle of a function of the component\n"
        "  'text'   text               text; quoted where it would be a number otherwise\n"
        "  --                          everything after it is a VALUE, also where it starts with '-'");
    command->callback(
        [options, command, &behindMark] { runCall(*options, inputsOf(command->remaining(), behindMark)); });
}

}  // namespace kpa
