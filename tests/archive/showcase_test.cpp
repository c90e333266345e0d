#include "componentrun.h"

#include "values.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

namespace {

class Showcase : public testing::Test {
protected:
    static double number(const qxArrayOwner& array) {
        EXPECT_EQ(qxGetClassID(array.get()), qxDOUBLE_CLASS);
        return *static_cast<const double*>(array->realData());
    }

    ComponentRun run_{SHOWCASE_ARCHIVE};
};

template <typename T>
void expectIncrement(ComponentRun& run, qxClassID classId) {
    SCOPED_TRACE(classId);
    using Limits = std::numeric_limits<T>;
    const std::uint32_t dimensions[] = {1, 3, 1};
    const qxArrayOwner x(qxCreateNumericArray(3, dimensions, classId, qxREAL));
    auto* values = static_cast<T*>(x->realData());
    const T given[] = {Limits::lowest(), 7, Limits::max()};
    std::copy_n(given, 3, values);
    const qxArrayOwner y = std::move(run.call("increment", 1, {x.get()}).at(0));
    ASSERT_EQ(qxGetClassID(y.get()), classId);
    ASSERT_EQ(y->numberOfDimensions(), 3U);
    const T expected[] = {static_cast<T>(Limits::lowest() + 1), 8, Limits::max()};
    EXPECT_TRUE(std::equal(expected, expected + 3, static_cast<const T*>(y->realData())));
    EXPECT_TRUE(std::equal(given, given + 3, values)) << "the input changed";
}

/// The numeric classes in the order of their numbers.
template <typename... T>
void expectIncrements(ComponentRun& run) {
    int classId = qxDOUBLE_CLASS;
    (expectIncrement<T>(run, static_cast<qxClassID>(classId++)), ...);
}

TEST_F(Showcase, IncrementsEveryNumericClassWithSaturation) {
    expectIncrements<double, float, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                     std::int64_t, std::uint64_t>(run_);
}

TEST_F(Showcase, GivesWhatItsInputsSay) {
    const std::tuple<const char*, std::vector<std::string>, const char*> table[] = {
        {"invert", {"true"}, "0"},
        {"conjugate", {"3+4i"}, "3 - 4i"},
        {"shout", {"gr\xC3\xBC\xC3\x9F, 1 a"}, "GR\xC3\xBC\xC3\x9F, 1 A"},
        {"shout", {"''"}, "0-by-0 empty char"},
        {"recover", {}, "showcase:asked: this function always fails"},
        {"handle_of", {"parabola"}, "@parabola"},
        {"apply", {"@parabola", "5"}, "10"},
        {"apply", {"@count", "1", "text", "[1 2]"}, "3"},
    };
    for (const auto& [function, inputs, shown] : table) {
        EXPECT_EQ(shownText(run_.callWith(function, 1, inputs).at(0)), shown) << function;
    }
}

TEST_F(Showcase, FailsInItsOwnWords) {
    const struct {
        const char* function;
        std::vector<std::string> inputs;
        const char* failure;
    } table[] = {
        {"increment", {"true"}, "increment: argument 1 (x) is a 1-by-1 logical array, expected a real numeric array"},
        {"fail_in_call", {"so it is"}, "so it is"},
        {"apply", {"@nothing"}, "component showcase has no function \"nothing\""},
        {"apply", {"1"}, "apply: argument 1 (h) is a 1-by-1 double array, expected a function handle"},
        {"minimize", {"@parabola", "4", "3"}, "minimize: argument 2 (lower) must be below argument 3 (upper)"},
        {"minimize", {"@parabola", "NaN", "3"}, "minimize: argument 2 (lower) must be finite"},
        {"minimize", {"@parabola", "1", "3", "0"}, "minimize: argument 4 (tolerance) must be above 0"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(failureOf([&] { run_.callWith(row.function, 1, row.inputs); }), row.failure) << row.function;
    }
}

TEST_F(Showcase, TakesAndGivesCellsAndStructs) {
    const qxArrayOwner cell(qxCreateCellMatrix(1, 3));
    qxSetCell(cell.get(), 0, qxCreateString("first"));
    qxSetCell(cell.get(), 2, qxCreateDoubleScalar(3));
    const std::vector<qxArrayOwner> reversed = run_.call("reverse", 1, {cell.get()});
    EXPECT_EQ(number(qxArrayOwner(qxDuplicateArray(qxGetCell(reversed[0].get(), 0)))), 3);
    EXPECT_EQ(qxGetString(qxGetCell(reversed[0].get(), 2)), "first");

    const char* names[] = {"a", "b"};
    const qxArrayOwner record(qxCreateStructMatrix(1, 1, 2, names));
    qxSetCell(record.get(), 1, qxCreateString("kept"));
    const qxArrayOwner words[] = {kpa::parseValue("b"), kpa::parseValue("c")};
    const std::vector<qxArrayOwner> renamed = run_.call("rename", 1, {record.get(), words[0].get(), words[1].get()});
    EXPECT_EQ(qxGetString(qxGetField(renamed[0].get(), 0, "c")), "kept");
}

TEST_F(Showcase, MinimisesAFunctionOfItsOwn) {
    const std::size_t before = qxLiveArrayCount();
    {
        const std::vector<qxArrayOwner> inside = run_.callWith("minimize", 3, {"@parabola", "-3", "9"});
        EXPECT_NEAR(number(inside.at(0)), 2, 1e-7);
        EXPECT_NEAR(number(inside.at(1)), 1, 1e-12);
        EXPECT_GT(number(inside.at(2)), 2);
        EXPECT_LT(number(inside.at(2)), 60);
        const std::vector<qxArrayOwner> atBound = run_.callWith("minimize", 3, {"@parabola", "3", "4"});
        EXPECT_NEAR(number(atBound.at(0)), 3, 2e-7);
        const std::vector<qxArrayOwner> coarse = run_.callWith("minimize", 3, {"@parabola", "3", "4", "0.1"});
        EXPECT_NEAR(number(coarse.at(0)), 3, 0.1);
        EXPECT_LT(number(coarse.at(2)), number(atBound.at(2)));
        EXPECT_NEAR(number(run_.callWith("minimize", 1, {"@parabola", "-9", "1"}).at(0)), 1, 1e-7);
        EXPECT_NEAR(number(run_.callWith("minimize", 1, {"@parabola", "-1e6", "1e6", "1e-300"}).at(0)), 2, 1e-7);
    }
    EXPECT_EQ(qxLiveArrayCount(), before);
}

}  // namespace
