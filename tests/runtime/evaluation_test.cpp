#include "testcomponent.h"

#include "vrlbase/exceptions.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

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

TEST(Evaluation, ChecksCountsBeforeTheFunctionRuns) {
    TestInstance instance;
    EXPECT_EQ(instance.failureOf("add", {scalar(1)}).message, "add: 1 argument given, expected 2");
    EXPECT_EQ(instance.failureOf("add", {scalar(1), scalar(1), scalar(1)}).message,
              "add: 3 arguments given, expected 2");
    EXPECT_EQ(instance.failureOf("add", {scalar(1), scalar(1)}, 2).message,
              "add: 2 results asked for, it gives at most 1");
    EXPECT_EQ(instance.failureOf("add", {scalar(1), nullptr}).message, "add: argument 2 is no array");
    EXPECT_EQ(instance.failureOf("add", {scalar(1), scalar(1)}, -1).message,
              "add: the number of results is negative: -1");
    qxArray* result = nullptr;
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), "add", 1, &result, -1, nullptr), Norvane::vrl::vrlBaseException);
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), "add", 1, &result, 2, nullptr), Norvane::vrl::vrlBaseException);
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), "add", 1, nullptr, 0, nullptr), Norvane::vrl::vrlBaseException);
    EXPECT_THROW(vrlLoomkitFeval(instance.handle(), nullptr, 1, &result, 0, nullptr), Norvane::vrl::vrlBaseException);
    EXPECT_EQ(result, nullptr);
}

TEST(Evaluation, OfAnUnknownFunctionNamesSimilarOnes) {
    TestInstance instance;
    EXPECT_EQ(instance.failureOf("ad").message, "component testing has no function \"ad\"; did you mean add");
    EXPECT_EQ(instance.failureOf("FailOutr").message,
              "component testing has no function \"FailOutr\"; did you mean failOuter");
    EXPECT_EQ(instance.failureOf("pair_of_cupit").message,
              "component testing has no function \"pair_of_cupit\"; did you mean pair_of_copies or pair_of_input");
    EXPECT_EQ(instance.failureOf("").message, "component testing has no function \"\"");
    EXPECT_EQ(instance.failureOf("quite_another_thing").message,
              "component testing has no function \"quite_another_thing\"");
}

TEST(Evaluation, CallsFunctionHandlesWithoutPilingUpArrays) {
    TestInstance instance;
    qxArrayOwner handle = instance.call1("make_handle", {text("add")});
    EXPECT_EQ(qxGetFunctionName(handle.get()), "add");
    const auto results = instance.call("repeat", 2, {handle.release(), scalar(1000)});
    EXPECT_EQ(firstOf(results[0]), 1000.0);
    EXPECT_EQ(firstOf(results[1]), 0.0);
}

TEST(Evaluation, OfEndlessRecursionFailsOnLargeAndSmallStacks) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    TestInstance::Failure failure = instance.failureOf("recurse");
    EXPECT_EQ(failure.message, "recurse: calls nest too deep (256 calls)");
    EXPECT_EQ(failure.stack.size(), 256U);

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{512} * 1024);
    pthread_t small;
    failure = {};
    const auto run = [&] { failure = instance.failureOf("recurse"); };
    using Run = decltype(run);
    ASSERT_EQ(pthread_create(
                  &small, &attributes,
                  [](void* body) -> void* {
                      (*static_cast<const Run*>(body))();
                      return nullptr;
                  },
                  const_cast<void*>(static_cast<const void*>(&run))),
              0);
    pthread_join(small, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(failure.message.rfind("recurse: calls nest too deep (", 0), 0U) << failure.message;
    EXPECT_EQ(qxLiveArrayCount(), before);
}

TEST(Evaluation, RunsOnSeveralThreadsAtOnce) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    const auto work = [&instance](double base, int* wrong) {
        for (int i = 0; i < 300; ++i) {
            *wrong += firstOf(instance.call1("add", {scalar(base), scalar(i)})) == base + i ? 0 : 1;
            *wrong += instance.failureOf("failOuter").stack.size() == 3 ? 0 : 1;
        }
    };
    int wrong[2] = {};
    std::thread first(work, 1000.0, &wrong[0]);
    std::thread second(work, 2000.0, &wrong[1]);
    first.join();
    second.join();
    EXPECT_EQ(wrong[0] + wrong[1], 0);
    EXPECT_EQ(qxLiveArrayCount(), before);
}

}  // namespace
