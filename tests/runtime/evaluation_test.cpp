#include "testcomponent.h"

#include "support/smallstack.h"
#include "vrlbase/exceptions.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace {

using loomkit::test::runOnStack;
using Norvane::vrl::vrlBaseException;

TEST(Evaluation, GivesAsManyResultsAsAskedFor) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    for (int stored = 0; stored <= 4; ++stored) {
        for (int asked = 0; asked <= 4; ++asked) {
            const auto results = instance.call("count", asked, {scalar(stored)});
            for (int i = 0; i < asked; ++i) {
                const auto& result = results[static_cast<std::size_t>(i)];
                EXPECT_EQ(result == nullptr, i >= stored) << "stored " << stored << " asked " << asked;
                EXPECT_TRUE(result == nullptr || firstOf(result) == i + 1);
            }
        }
    }
    EXPECT_EQ(qxLiveArrayCount(), before);
}

TEST(Evaluation, CallsFunctionHandlesWithoutPilingUpArrays) {
    TestInstance instance;
    qxArrayOwner handle = instance.call1("make_handle", {text("add")});
    EXPECT_EQ(qxGetFunctionName(handle.get()), "add");
    const auto results = instance.call("repeat", 2, {handle.release(), scalar(1000)});
    EXPECT_EQ(firstOf(results[0]), 1000.0);
    EXPECT_EQ(firstOf(results[1]), 0.0);
}

TEST(Failure, SaysWhatIsWrongAndLeavesNoArray) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    const std::tuple<const char*, std::vector<qxArray*>, int, const char*> table[] = {
        {"add", {scalar(1)}, 1, "add: 1 argument given, expected 2"},
        {"add", {scalar(1), scalar(1), scalar(1)}, 1, "add: 3 arguments given, expected 2"},
        {"add", {scalar(1), scalar(1)}, 2, "add: 2 results asked for, it gives at most 1"},
        {"add", {scalar(1), nullptr}, 1, "add: argument 2 is no array"},
        {"add", {scalar(1), scalar(1)}, -1, "add: the number of results is negative: -1"},
        {"add", {row({1, 2, 3}), row({1})}, 1, "add: argument 2 (b) has 1 column, expected 3"},
        {"read", {text("sum")}, 1, "read: argument 2 (value) is missing, expected a real matrix"},
        {"ad", {}, 1, "component testing has no function \"ad\"; did you mean add"},
        {"FailOutr", {}, 1, "component testing has no function \"FailOutr\"; did you mean failOuter"},
        {"pair_of_cupit",
         {},
         1,
         "component testing has no function \"pair_of_cupit\"; did you mean pair_of_copies or pair_of_input"},
        {"", {}, 1, "component testing has no function \"\""},
        {"quite_another_thing", {}, 1, "component testing has no function \"quite_another_thing\""},
        {"failOuter", {row({1, 2})}, 3, "it broke"},
        {"fail_with_arrays", {row({1, 2})}, 3, "failed with arrays about"},
        {"fail_memory", {row({1, 2})}, 3, "out of memory"},
        {"raw_throw", {row({1, 2})}, 3, "thrown past the edge"},
        {"fail_foreign", {row({1, 2})}, 3, "fail_foreign threw something that is no std::exception"},
    };
    for (const auto& [function, inputs, nlhs, message] : table) {
        EXPECT_EQ(instance.failureOf(function, inputs, nlhs).message, message);
    }
    qxArray* result = nullptr;
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), "count", 1, &result, -1, nullptr), vrlBaseException);
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), "count", 1, &result, 2, nullptr), vrlBaseException);
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), "count", 1, nullptr, 0, nullptr), vrlBaseException);
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), nullptr, 1, &result, 0, nullptr), vrlBaseException);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(qxLiveArrayCount(), before);
    EXPECT_EQ(firstOf(instance.call1("add", {scalar(1), scalar(2)})), 3.0);
}

TEST(Failure, HasALineForEveryFunctionAndHelper) {
    const std::tuple<const char*, const char*, std::vector<std::string>> table[] = {
        {"failOuter", "identifier test:deep", {"at helper", "at failInner", "at failOuter"}},
        {"fail_library", "", {"at libraryHelper", "at fail_library"}},
    };
    TestInstance instance;
    for (const auto& [function, identifier, passed] : table) {
        const TestInstance::Failure failure = instance.failureOf(function);
        EXPECT_EQ(failure.identifier, identifier);
        ASSERT_EQ(failure.stack.size(), passed.size());
        // In the component's source, the helper stands first, then the inner function, then the outer one.
        int lineBefore = 0;
        for (std::size_t i = 0; i < passed.size(); ++i) {
            const std::string place = passed[i] + " (functions.cpp:";
            EXPECT_EQ(failure.stack[i].rfind(place, 0), 0U) << failure.stack[i];
            const int line = std::atoi(failure.stack[i].c_str() + place.size());
            EXPECT_GT(line, lineBefore);
            lineBefore = line;
        }
    }
    EXPECT_EQ(instance.failureOf("raw_throw").stack, std::vector<std::string>{"at raw_throw"});
}

TEST(Failure, CanBeCaughtByTheCaller) {
    const std::pair<const char*, const char*> table[] = {
        {"failInner", "test:deep|it broke"},
        {"fail_foreign", "|fail_foreign threw something that is no std::exception"},
        {"fail_memory", "krt:memory|out of memory"},
        {"nothing_like_that", "|component testing has no function \"nothing_like_that\""},
        {"add", "|add: 0 arguments given, expected 2"},
    };
    TestInstance instance;
    for (const auto& [function, caught] : table) {
        EXPECT_EQ(qxGetString(instance.call1("recover", {text(function)}).get()), caught);
    }
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

TEST(Failure, OfEndlessRecursionComesOnLargeAndSmallStacks) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    TestInstance::Failure failure = instance.failureOf("recurse");
    EXPECT_EQ(failure.message, "recurse: calls nest too deep (256 calls)");
    EXPECT_EQ(failure.stack.size(), 256U);
    failure = {};
    runOnStack(std::size_t{512} << 10U, [&] { failure = instance.failureOf("recurse"); });
    EXPECT_EQ(failure.message.rfind("recurse: calls nest too deep (", 0), 0U) << failure.message;
    EXPECT_EQ(qxLiveArrayCount(), before);
}

/// Appends the array as text, and its blocks and those of its elements to `blocks`.
std::string collect(const qxArray* array, std::set<const void*>& blocks) {
    if (array == nullptr) {
        return "-";
    }
    blocks.insert(array->realData());
    if (qxGetClassID(array) != qxCELL_CLASS) {
        return std::to_string(static_cast<int>(*static_cast<double*>(array->realData())));
    }
    std::string shown = "{";
    for (std::size_t i = 0; i < qxGetNumberOfElements(array); ++i) {
        shown += (i == 0 ? "" : " ") + collect(qxGetCell(array, i), blocks);
    }
    return shown + "}";
}

TEST(Results, HaveAStorageOfTheirOwn) {
    // shown: the last result as text
    const std::tuple<const char*, std::size_t, const char*> aliasings[] = {{"identity", 1, "{5 {6}}"},
                                                                           {"shared_copy", 1, "{5 {6}}"},
                                                                           {"pair_of_input", 1, "{{5 {6}} {5 {6}}}"},
                                                                           {"pair_of_copies", 1, "{{5 {6}} {5 {6}}}"},
                                                                           {"element", 1, "5"},
                                                                           {"element_in_cell", 1, "{5 5}"},
                                                                           {"same_twice", 2, "7"},
                                                                           {"cell_and_element", 2, "7"},
                                                                           {"element_of_temporary", 1, "7"},
                                                                           {"destroy_inputs", 0, ""}};
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    for (const auto& [function, results, expectedShown] : aliasings) {
        SCOPED_TRACE(function);
        {
            const qxArrayOwner input(cellOf({scalar(5), cellOf({scalar(6)})}));
            qxArray* inputs[] = {input.get()};
            std::vector<qxArray*> roots(results);
            vrlLoomkitFeval(instance.handle(), function, static_cast<int>(results), roots.data(), 1, inputs);
            const std::vector<qxArrayOwner> owned(roots.begin(), roots.end());
            std::set<const void*> blocks;
            EXPECT_EQ(collect(input.get(), blocks), "{5 {6}}");
            std::string shown;
            for (const qxArray* root : roots) {
                std::set<const void*> own;
                shown = collect(root, own);
                const std::size_t apart = blocks.size() + own.size();
                blocks.merge(own);
                EXPECT_EQ(blocks.size(), apart) << "storage that is in two trees";
            }
            EXPECT_EQ(shown, expectedShown);
        }
        EXPECT_EQ(qxLiveArrayCount(), before);
    }
}

}  // namespace
