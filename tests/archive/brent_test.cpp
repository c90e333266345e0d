#include "brent.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Objective = double (*)(double);

struct Problem {
    const char* name;
    Objective f;
    double lower;
    double upper;
    double minimum;
};

const Problem problems[] = {
    {"Cosine", [](double x) { return std::cos(x); }, 2, 4.5, 3.14159265358979323846},
    {"FlatQuartic", [](double x) { return std::pow(x - 1, 4); }, -10, 11, 1},
    {"Corner", [](double x) { return std::abs(x + 0.25); }, -1, 1, -0.25},
    {"Rising", [](double x) { return x; }, 1, 5, 1},
    {"Falling", [](double x) { return -x * x * x; }, 0, 2, 2},
    {"Logarithmic", [](double x) { return x * std::log(x); }, 1e-9, 3, 0.36787944117144233},
    {"FarOff", [](double x) { return (x - 1e9) * (x - 1e9); }, 0, 1e10, 1e9},
};

TEST(BrentMinimiser, FindsTheMinimaOfATable) {
    for (const Problem& problem : problems) {
        const showcase::Minimum found =
            showcase::BrentMinimiser<Objective>(problem.f, problem.lower, problem.upper, 1e-9).run(500);
        // A minimum shows only down to the square root of the precision; that of a quartic to the fourth root.
        const double bound = problem.f == problems[1].f ? 1e-3 : 5e-8 * std::max(1.0, std::abs(problem.minimum));
        EXPECT_NEAR(found.x, problem.minimum, bound) << problem.name;
        EXPECT_TRUE(found.converged) << problem.name;
        EXPECT_LT(found.evaluations, 150) << problem.name;
    }
}

TEST(BrentMinimiser, StaysWithinItsBoundsAndItsEvaluations) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-10, 10);
    for (int round = 0; round < 200; ++round) {
        const double a = uniform(random);
        const double b = a + std::abs(uniform(random)) + 0.01;
        const double frequency = uniform(random);
        int calls = 0;
        const auto wild = [&](double x) {
            EXPECT_GE(x, a);
            EXPECT_LE(x, b);
            ++calls;
            return std::sin(frequency * x) + 0.1 * std::cos(31 * x);
        };
        const showcase::Minimum found = showcase::BrentMinimiser<decltype(wild)>(wild, a, b, 1e-8).run(25);
        EXPECT_LE(calls, 25);
        EXPECT_EQ(calls, found.evaluations);
        EXPECT_LE(found.value, wild(a + 0.38196601125010515 * (b - a)));
    }
}

}  // namespace
