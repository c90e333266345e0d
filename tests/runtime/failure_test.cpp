#include "testcomponent.h"

#include <gtest/gtest.h>

namespace {

/// A stack line without its line number, which moves with every edit of the component.
std::string withoutLine(std::string line) {
    const std::size_t colon = line.rfind(':');
    return colon == std::string::npos ? line : line.erase(colon, line.size() - colon - 1);
}

int lineNumber(const std::string& line) { return std::atoi(line.c_str() + line.rfind(':') + 1); }

TEST(Failure, HasALineForEveryFunctionAndHelper) {
    TestInstance instance;
    const TestInstance::Failure failure = instance.failureOf("failOuter");
    EXPECT_EQ(failure.message, "it broke");
    EXPECT_EQ(failure.identifier, "identifier test:deep");
    ASSERT_EQ(failure.stack.size(), 3U);
    EXPECT_EQ(withoutLine(failure.stack[0]), "at helper (functions.cpp)");
    EXPECT_EQ(withoutLine(failure.stack[1]), "at failInner (functions.cpp)");
    EXPECT_EQ(withoutLine(failure.stack[2]), "at failOuter (functions.cpp)");
    // In the component's source, the helper stands first, then the inner function, then the outer one.
    EXPECT_GT(lineNumber(failure.stack[0]), 0);
    EXPECT_LT(lineNumber(failure.stack[0]), lineNumber(failure.stack[1]));
    EXPECT_LT(lineNumber(failure.stack[1]), lineNumber(failure.stack[2]));
}

TEST(Failure, OfAnyOtherExceptionKeepsTheFramesItPassed) {
    TestInstance instance;
    const TestInstance::Failure failure = instance.failureOf("fail_library");
    EXPECT_EQ(failure.message, "thrown by a library");
    EXPECT_EQ(failure.identifier, "");
    ASSERT_EQ(failure.stack.size(), 2U);
    EXPECT_EQ(withoutLine(failure.stack[0]), "at libraryHelper (functions.cpp)");
    EXPECT_EQ(withoutLine(failure.stack[1]), "at fail_library (functions.cpp)");
}

TEST(Failure, TakesWhateverIsThrown) {
    TestInstance instance;
    EXPECT_EQ(instance.failureOf("fail_memory").message, "out of memory");
    EXPECT_EQ(instance.failureOf("raw_throw").message, "thrown past the edge");
    EXPECT_EQ(instance.failureOf("raw_throw").stack, std::vector<std::string>{"at raw_throw"});
    EXPECT_EQ(instance.failureOf("fail_foreign").message, "fail_foreign threw something that is no std::exception");
    EXPECT_EQ(firstOf(instance.call1("add", {scalar(1), scalar(2)})), 3.0);
}

TEST(Failure, LeavesNoArray) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    for (const char* function : {"fail_with_arrays", "failOuter", "fail_foreign", "fail_memory", "raw_throw"}) {
        EXPECT_FALSE(instance.failureOf(function, {row({1, 2, 3})}, 3).message.empty()) << function;
        EXPECT_EQ(qxLiveArrayCount(), before) << function;
    }
}

TEST(Failure, CanBeCaughtByTheCaller) {
    TestInstance instance;
    const auto recovered = [&](const char* function) {
        return qxGetString(instance.call1("recover", {text(function)}).get());
    };
    EXPECT_EQ(recovered("failInner"), "test:deep|it broke");
    EXPECT_EQ(recovered("fail_foreign"), "|fail_foreign threw something that is no std::exception");
    EXPECT_EQ(recovered("fail_memory"), "krt:memory|out of memory");
    EXPECT_EQ(recovered("nothing_like_that"), "|component testing has no function \"nothing_like_that\"");
    EXPECT_EQ(recovered("add"), "|add: 0 arguments given, expected 2");
}

TEST(Failure, OnAThreadOfTheComponentIsAnErrorThere) {
    TestInstance instance;
    EXPECT_EQ(qxGetString(instance.call1("fail_on_thread").get()),
              "add: a function can't be called on a thread that the component started");
}

TEST(Failure, ReachesAComponentInC) {
    TestInstance instance(describeCComponent());
    const auto scaled = instance.call1("scale", {row({1, 2, 3}), scalar(2)});
    EXPECT_EQ(static_cast<double*>(scaled->realData())[2], 6.0);
    EXPECT_EQ(qxGetString(instance.call1("relay", {text("drop")}).get()), "a matrix and a factor are expected");
    const TestInstance::Failure failure = instance.failureOf("relay", {text("pass")});
    EXPECT_EQ(failure.message, "a matrix and a factor are expected");
    EXPECT_EQ(failure.stack, (std::vector<std::string>{"at scale (plain.c:12)", "at relay (plain.c:30)"}));
}

}  // namespace
