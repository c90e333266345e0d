#include "componentrun.h"

#include "values.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace {

class Showcase : public testing::Test {
protected:
    /// The first result as text.
    std::string shown(const std::string& function, const std::vector<std::string>& words) {
        return shownText(run_.callWith(function, 1, words).at(0));
    }
    std::string failure(const std::string& function, const std::vector<std::string>& words) {
        return failureOf([&] { run_.callWith(function, 1, words); });
    }
    static double number(const qxArrayOwner& array) {
        EXPECT_EQ(qxGetClassID(array.get()), qxDOUBLE_CLASS);
        return *static_cast<const double*>(array->realData());
    }

    ComponentRun run_{SHOWCASE_ARCHIVE};
};

TEST_F(Showcase, PrintsThroughBothHandlersAlsoFromAThreadOfItsOwn) {
    run_.callWith("say", 0, {"hello"});
    run_.callWith("caution", 0, {"mind the gap"});
    run_.callWith("say_from_thread", 0, {"line", "3"});
    EXPECT_EQ(run_.output, "hello\nline 0\nline 1\nline 2\n");
    EXPECT_EQ(run_.errors, "Warning: mind the gap\nWarning: line is done\n");
}

TEST_F(Showcase, FailsWithTheStackOfItsFunctions) {
    const auto stackOf = [this](const char* function) {
        std::string functions;
        try {
            run_.callWith(function, 1, {});
        } catch (const Norvane::vrl::vrlBaseException& error) {
            for (const auto& line : error.getStack()) {
                functions += line.function + " ";
                EXPECT_EQ(line.file, "failing.cpp");
                EXPECT_GT(line.line, 0) << line.function;
            }
        }
        return functions;
    };
    EXPECT_EQ(stackOf("fail_deep"), "innermost middle fail_deep ");
    EXPECT_EQ(stackOf("fail_in_call"), "innermost middle fail_deep fail_in_call ");
    EXPECT_NE(failure("fail_standard", {}).find("vector::_M_range_check"), std::string::npos);
    EXPECT_EQ(failure("fail_deep", {"so it is"}), "so it is");
    EXPECT_EQ(shown("recover", {}), "showcase:asked: this function always fails");
}

template <typename T>
void expectIncrement(ComponentRun& run, qxClassID classId) {
    SCOPED_TRACE("class " + std::to_string(classId));
    const std::uint32_t dimensions[] = {1, 3, 1};
    const qxArrayOwner x(qxCreateNumericArray(3, dimensions, classId, qxREAL));
    auto* values = static_cast<T*>(x->realData());
    values[0] = std::numeric_limits<T>::lowest();
    values[1] = 7;
    values[2] = std::numeric_limits<T>::max();
    const qxArrayOwner y = std::move(run.call("increment", 1, {x.get()}).at(0));
    ASSERT_EQ(qxGetClassID(y.get()), classId);
    ASSERT_EQ(y->numberOfDimensions(), 3U);
    const auto* results = static_cast<const T*>(y->realData());
    EXPECT_EQ(results[0], static_cast<T>(std::numeric_limits<T>::lowest() + 1));
    EXPECT_EQ(results[1], static_cast<T>(8));
    EXPECT_EQ(results[2], std::numeric_limits<T>::max());
    EXPECT_EQ(values[1], static_cast<T>(7));
}

TEST_F(Showcase, IncrementsEveryNumericClassWithSaturation) {
    expectIncrement<double>(run_, qxDOUBLE_CLASS);
    expectIncrement<float>(run_, qxSINGLE_CLASS);
    expectIncrement<std::int8_t>(run_, qxINT8_CLASS);
    expectIncrement<std::uint8_t>(run_, qxUINT8_CLASS);
    expectIncrement<std::int16_t>(run_, qxINT16_CLASS);
    expectIncrement<std::uint16_t>(run_, qxUINT16_CLASS);
    expectIncrement<std::int32_t>(run_, qxINT32_CLASS);
    expectIncrement<std::uint32_t>(run_, qxUINT32_CLASS);
    expectIncrement<std::int64_t>(run_, qxINT64_CLASS);
    expectIncrement<std::uint64_t>(run_, qxUINT64_CLASS);
    for (const char* other : {"a", "true", "1i"}) {
        EXPECT_EQ(failure("increment", {other}).rfind("increment: argument 1 (x) is a", 0), 0U) << other;
    }
}

TEST_F(Showcase, TransformsLogicalsComplexNumbersAndText) {
    EXPECT_EQ(shown("invert", {"true"}), "0");
    EXPECT_EQ(shown("conjugate", {"3+4i"}), "3 - 4i");
    EXPECT_EQ(shown("shout", {"gr\xC3\xBC\xC3\x9F, 1 a"}), "GR\xC3\xBC\xC3\x9F, 1 A");
    EXPECT_EQ(shown("shout", {"''"}), "0-by-0 empty char");
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
    const qxArrayOwner words[] = {kpa::parseValue("b"), kpa::parseValue("c"), kpa::parseValue("x")};
    const std::vector<qxArrayOwner> renamed = run_.call("rename", 1, {record.get(), words[0].get(), words[1].get()});
    EXPECT_EQ(qxGetString(qxGetField(renamed[0].get(), 0, "c")), "kept");
    EXPECT_EQ(failureOf([&] {
                  run_.call("rename", 1, {record.get(), words[2].get(), words[1].get()});
              }),
              "rename: argument 1 (s) has no field 'x'");
    const std::vector<qxArrayOwner> fields = run_.call("fields", 2, {renamed[0].get()});
    EXPECT_EQ(qxGetString(qxGetCell(fields.at(0).get(), 1)), "c");
    EXPECT_EQ(number(fields.at(1)), 2);
}

TEST_F(Showcase, GivesItsInputAndFewerResultsThanAskedFor) {
    const qxArrayOwner x = kpa::parseValue("5");
    const std::vector<qxArrayOwner> y = run_.call("same", 1, {x.get()});
    EXPECT_FALSE(qxSharesStorage(x.get(), y[0].get()));
    EXPECT_EQ(number(y[0]), 5);
    const std::vector<qxArrayOwner> results = run_.call("fewer", 3, {});
    EXPECT_EQ(qxGetString(results.at(0).get()), "the only one");
    EXPECT_EQ(results.at(1), nullptr);
    EXPECT_EQ(results.at(2), nullptr);
}

TEST_F(Showcase, MakesAndCallsFunctionHandles) {
    EXPECT_EQ(shown("handle_of", {"parabola"}), "@parabola");
    EXPECT_EQ(shown("apply", {"@parabola", "5"}), "10");
    const std::vector<qxArrayOwner> counts = run_.callWith("apply", 2, {"@count", "1", "text", "[1 2]"});
    EXPECT_EQ(number(counts.at(0)), 3);
    EXPECT_EQ(number(counts.at(1)), 2);
    EXPECT_EQ(failure("apply", {"@nothing"}), "component showcase has no function \"nothing\"");
    EXPECT_EQ(failure("apply", {"1"}), "apply: argument 1 (h) is a 1-by-1 double array, expected a function handle");
}

TEST_F(Showcase, MinimisesAFunctionOfItsOwn) {
    const std::size_t before = qxLiveArrayCount();
    {
        const std::vector<qxArrayOwner> inside = run_.callWith("minimize", 3, {"@parabola", "-3", "9"});
        EXPECT_NEAR(number(inside.at(0)), 2, 1e-7);
        EXPECT_NEAR(number(inside.at(1)), 1, 1e-12);
        EXPECT_GT(number(inside.at(2)), 2);
        EXPECT_LT(number(inside.at(2)), 60);
        EXPECT_NEAR(number(run_.callWith("minimize", 1, {"@parabola", "3", "4"}).at(0)), 3, 1e-6);
    }
    EXPECT_EQ(qxLiveArrayCount(), before);
    EXPECT_EQ(failure("minimize", {"@parabola", "4", "3"}),
              "minimize: argument 2 (lower) must be below argument 3 (upper)");
    EXPECT_EQ(failure("minimize", {"@parabola", "NaN", "3"}), "minimize: argument 2 (lower) must be finite");
    EXPECT_EQ(failure("minimize", {"@parabola", "1", "3", "0"}), "minimize: argument 4 (tolerance) must be above 0");
    EXPECT_NE(failure("minimize", {"1", "3", "4"})
                  .find("minimize: argument 1 (f) is a 1-by-1 double array, expected a function handle"),
              std::string::npos);
}

}  // namespace
