/// The benchmark program: the usual options of Google Benchmark, several runs of each benchmark in mixed order unless
/// they say otherwise, and a table of ratios in the end.

#include "support/cases.h"
#include "support/jvm.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                nativevrl::bench::noteTime(run.run_name.function_name,
                                           run.cpu_accumulated_time * 1e9 / static_cast<double>(run.iterations));
            }
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string time = "--benchmark_min_time=0.05";
    std::string aggregates = "--benchmark_report_aggregates_only=false";
    // What the caller gives comes last and holds.
    std::vector<char*> arguments = {argv[0], repetitions.data(), interleaving.data(), time.data(), aggregates.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    JNIEnv* env = nativevrl::bench::startJvm();
    if (env == nullptr) {
        std::fputs("The virtual machine of the benchmarks did not start.\n", stderr);
        return 1;
    }
    nativevrl::bench::addAllCases(env);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    nativevrl::bench::printRatios(std::cout);
    return 0;
}
