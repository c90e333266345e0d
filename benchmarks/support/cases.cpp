#include "support/cases.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <iomanip>
#include <map>
#include <utility>
#include <vector>

namespace nativevrl::bench {

namespace {

constexpr int kRatioWidth = 15;

using Files = std::vector<void (*)(JNIEnv*)>;

Files& files() {
    static Files all;
    return all;
}

std::vector<Case>& cases() {
    static std::vector<Case> all;
    return all;
}

std::map<std::string, std::vector<double>>& times() {
    static std::map<std::string, std::vector<double>> all;
    return all;
}

void addBenchmark(const std::string& name, const std::function<void()>& run) {
    if (!run) {
        return;
    }
    benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
        for (auto _ : state) {
            run();
        }
    });
}

/// Median of a benchmark's times; 0 when it didn't run.
double medianOf(const std::string& benchmark) {
    const auto found = times().find(benchmark);
    if (found == times().end()) {
        return 0;
    }
    std::vector<double> sorted = found->second;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

void printRatio(std::ostream& out, double time, double ours) {
    if (time == 0 || ours == 0) {
        out << std::setw(kRatioWidth) << '-';
    } else {
        out << std::setw(kRatioWidth) << std::setprecision(2) << time / ours;
    }
}

}  // namespace

void addCase(Case one) {
    addBenchmark(one.name + "/ours", one.ours);
    addBenchmark(one.name + "/floor", one.floor);
    addBenchmark(one.name + "/copy", one.copy);
    addBenchmark(one.name + "/tiled", one.tiled);
    addBenchmark(one.name + "/straight", one.straight);
    cases().push_back(std::move(one));
}

CaseFile::CaseFile(void (*add)(JNIEnv* env)) { files().push_back(add); }

void addAllCases(JNIEnv* env) {
    for (auto* add : files()) {
        add(env);
    }
}

void noteTime(const std::string& benchmark, double nanoseconds) { times()[benchmark].push_back(nanoseconds); }

void printRatios(std::ostream& out) {
    constexpr const char* others[] = {"floor", "copy", "tiled", "straight"};
    out << std::fixed << '\n'
        << std::left << std::setw(36) << "case" << std::right << std::setw(14) << "ours us" << std::setw(12)
        << "ns/element";
    for (const std::string other : others) {
        out << std::setw(kRatioWidth) << other + "/ours";
    }
    out << '\n';
    for (const Case& one : cases()) {
        const double ours = medianOf(one.name + "/ours");
        if (ours == 0) {
            continue;
        }
        out << std::left << std::setw(36) << one.name << std::right << std::setw(14) << std::setprecision(1)
            << ours / 1000 << std::setw(12) << std::setprecision(2) << ours / static_cast<double>(one.elements);
        for (const std::string other : others) {
            printRatio(out, medianOf(one.name + "/" + other), ours);
        }
        out << '\n';
    }
}

}  // namespace nativevrl::bench
