#include "componentrun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

class Showcase : public testing::Test {
protected:
    qxArrayOwner one(const std::string& function, const std::vector<const qxArray*>& inputs) {
        return std::move(run_.call(function, 1, inputs).at(0));
    }
    double number(const qxArrayOwner& array) {
        EXPECT_EQ(qxGetClassID(array.get()), qxDOUBLE_CLASS);
        return *static_cast<const double*>(array->realData());
    }

    ComponentRun run_{SHOWCASE_ARCHIVE};
};

qxArrayOwner text(const char* value) { return qxArrayOwner(qxCreateString(value)); }
qxArrayOwner scalar(double value) { return qxArrayOwner(qxCreateDoubleScalar(value)); }

TEST_F(Showcase, PrintsThroughBothHandlers) {
    run_.call("say", 0, {text("hello").get()});
    run_.call("caution", 0, {text("mind the gap").get()});
    EXPECT_EQ(run_.output, "hello\n");
    EXPECT_EQ(run_.errors, "Warning: mind the gap\n");
}

TEST_F(Showcase, PrintsFromAThreadOfItsOwn) {
    run_.call("say_from_thread", 0, {text("line").get(), scalar(3).get()});
    EXPECT_EQ(run_.output, "line 0\nline 1\nline 2\n");
    EXPECT_EQ(run_.errors, "Warning: line is done\n");
}

std::vector<std::string> stackOf(ComponentRun& run, const std::string& function) {
    std::vector<std::string> functions;
    try {
        run.call(function, 1, {});
    } catch (const Norvane::vrl::vrlBaseException& error) {
        for (const auto& line : error.getStack()) {
            functions.push_back(line.function);
            EXPECT_NE(line.file.find("failing.cpp"), std::string::npos) << line.file;
            EXPECT_GT(line.line, 0) << line.function;
        }
    }
    return functions;
}

TEST_F(Showcase, FailsWithTheStackOfItsFunctions) {
    EXPECT_EQ(stackOf(run_, "fail_deep"), (std::vector<std::string>{"innermost", "middle", "fail_deep"}));
    EXPECT_EQ(stackOf(run_, "fail_in_call"),
              (std::vector<std::string>{"innermost", "middle", "fail_deep", "fail_in_call"}));
    EXPECT_NE(failureOf([&] { run_.call("fail_standard", 1, {}); }).find("vector::_M_range_check"), std::string::npos);
    EXPECT_EQ(failureOf([&] { run_.call("fail_deep", 1, {text("so it is").get()}); }), "so it is");
    EXPECT_EQ(qxGetString(one("recover", {}).get()), "showcase:asked: this function always fails");
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
    EXPECT_NE(failureOf([&] { run_.call("increment", 1, {text("a").get()}); }).find("increment: argument 1 (x) is a"),
              std::string::npos);
}

TEST_F(Showcase, TransformsLogicalsComplexNumbersAndText) {
    const qxArrayOwner no = one("invert", {qxArrayOwner(qxCreateLogicalScalar(true)).get()});
    EXPECT_EQ(qxGetClassID(no.get()), qxLOGICAL_CLASS);
    EXPECT_FALSE(*static_cast<const bool*>(no->realData()));
    const qxArrayOwner z(qxCreateDoubleMatrix(1, 1, qxCOMPLEX));
    *static_cast<double*>(z->realData()) = 3;
    *static_cast<double*>(z->imagData()) = 4;
    const qxArrayOwner conjugate = one("conjugate", {z.get()});
    EXPECT_EQ(*static_cast<const double*>(conjugate->realData()), 3);
    EXPECT_EQ(*static_cast<const double*>(conjugate->imagData()), -4);
    EXPECT_EQ(qxGetString(one("shout", {text("gr\xC3\xBC\xC3\x9F"
                                             "e, 1 a")
                                            .get()})
                              .get()),
              "GR\xC3\xBC\xC3\x9F"
              "E, 1 A");
}

TEST_F(Showcase, TakesAndGivesCellsAndStructs) {
    const qxArrayOwner cell(qxCreateCellMatrix(1, 3));
    qxSetCell(cell.get(), 0, qxCreateString("first"));
    qxSetCell(cell.get(), 2, qxCreateDoubleScalar(3));
    const qxArrayOwner reversed = one("reverse", {cell.get()});
    ASSERT_EQ(qxGetNumberOfElements(reversed.get()), 3U);
    EXPECT_EQ(qxGetClassID(qxGetCell(reversed.get(), 0)), qxDOUBLE_CLASS);
    EXPECT_EQ(qxGetString(qxGetCell(reversed.get(), 2)), "first");

    const char* names[] = {"a", "b"};
    const qxArrayOwner record(qxCreateStructMatrix(1, 1, 2, names));
    qxSetCell(record.get(), 1, qxCreateString("kept"));
    const qxArrayOwner renamed = one("rename", {record.get(), text("b").get(), text("c").get()});
    EXPECT_EQ(renamed->get_number_of_struct_fields(), 2U);
    EXPECT_EQ(qxGetString(qxGetField(renamed.get(), 0, "c")), "kept");
    EXPECT_EQ(failureOf([&] {
                  one("rename", {record.get(), text("x").get(), text("c").get()});
              }),
              "rename: argument 1 (s) has no field 'x'");
    const std::vector<qxArrayOwner> fields = run_.call("fields", 2, {renamed.get()});
    EXPECT_EQ(qxGetString(qxGetCell(fields.at(0).get(), 1)), "c");
    EXPECT_EQ(number(fields.at(1)), 2);
}

TEST_F(Showcase, GivesItsInputWithoutSharingIt) {
    const qxArrayOwner x = scalar(5);
    const qxArrayOwner y = one("same", {x.get()});
    EXPECT_NE(y.get(), x.get());
    EXPECT_FALSE(qxSharesStorage(x.get(), y.get()));
    EXPECT_EQ(number(y), 5);
}

TEST_F(Showcase, GivesFewerResultsThanAskedFor) {
    const std::vector<qxArrayOwner> results = run_.call("fewer", 3, {});
    EXPECT_EQ(qxGetString(results.at(0).get()), "the only one");
    EXPECT_EQ(results.at(1), nullptr);
    EXPECT_EQ(results.at(2), nullptr);
    const std::vector<qxArrayOwner> counts = run_.call("count", 2, {scalar(1).get(), scalar(2).get(), scalar(3).get()});
    EXPECT_EQ(number(counts.at(0)), 3);
    EXPECT_EQ(number(counts.at(1)), 2);
}

TEST_F(Showcase, MakesAndCallsFunctionHandles) {
    const qxArrayOwner handle = one("handle_of", {text("parabola").get()});
    EXPECT_EQ(qxGetFunctionName(handle.get()), "parabola");
    EXPECT_EQ(number(one("apply", {handle.get(), scalar(5).get()})), 10);
    const std::vector<qxArrayOwner> counts =
        run_.call("apply", 2, {one("handle_of", {text("count").get()}).get(), scalar(1).get()});
    EXPECT_EQ(number(counts.at(0)), 1);
    EXPECT_EQ(number(counts.at(1)), 2);
}

TEST_F(Showcase, MinimisesAFunctionOfItsOwn) {
    const qxArrayOwner f = one("handle_of", {text("parabola").get()});
    const std::size_t before = qxLiveArrayCount();
    {
        const std::vector<qxArrayOwner> inside = run_.call("minimize", 3, {f.get(), scalar(-3).get(), scalar(9).get()});
        EXPECT_NEAR(number(inside.at(0)), 2, 1e-7);
        EXPECT_NEAR(number(inside.at(1)), 1, 1e-12);
        EXPECT_GT(number(inside.at(2)), 2);
        EXPECT_LT(number(inside.at(2)), 60);
        const std::vector<qxArrayOwner> edge = run_.call("minimize", 1, {f.get(), scalar(3).get(), scalar(4).get()});
        EXPECT_NEAR(number(edge.at(0)), 3, 1e-6);
    }
    EXPECT_EQ(qxLiveArrayCount(), before);
    EXPECT_EQ(failureOf([&] {
                  run_.call("minimize", 1, {f.get(), scalar(4).get(), scalar(3).get()});
              }),
              "minimize: argument 2 (lower) must be below argument 3 (upper)");
    EXPECT_NE(failureOf([&] {
                  run_.call("minimize", 1, {scalar(1).get(), scalar(3).get(), scalar(4).get()});
              }).find("minimize: argument 1 (f) is a 1-by-1 double array, expected a function handle"),
              std::string::npos);
}

}  // namespace
