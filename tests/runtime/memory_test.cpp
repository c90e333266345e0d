// What the runtime does when operator new has no block left.

#include "testcomponent.h"

#include "krt/component.h"
#include "support/heapblocks.h"
#include "vrlbase/operation.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/componentinfo.h"

#include <gtest/gtest.h>

#include <functional>
#include <istream>
#include <memory>
#include <new>
#include <stdexcept>
#include <typeinfo>

namespace {

using loomkit::test::heapBlocksLeft;
using Norvane::vrl::vrlBaseException;

/// Runs an operation with no block left, then with one, and so on until it needs no more. `after` looks at what each
/// run left behind.
void runWithEverMoreBlocks(const std::function<void()>& operation, const std::function<void(bool done)>& after) {
    constexpr int plenty = 3000;
    for (int blocks = 0; blocks < plenty && !testing::Test::HasFailure(); ++blocks) {
        SCOPED_TRACE("with " + std::to_string(blocks) + " blocks");
        std::string failure;
        bool fits = false;
        heapBlocksLeft = blocks;
        try {
            operation();
            fits = std::exchange(heapBlocksLeft, -1) > 0;
        } catch (const std::exception& thrown) {
            heapBlocksLeft = -1;
            failure = dynamic_cast<const vrlBaseException*>(&thrown) == nullptr ? typeid(thrown).name() : thrown.what();
        }
        EXPECT_TRUE(failure.empty() || failure == "out of memory") << failure;
        after(failure.empty());
        if (fits) {
            EXPECT_GT(blocks, 0) << "no block was refused";
            return;
        }
    }
    ADD_FAILURE() << "still not enough";
}

/// An operation of the runtime, and what there is after it failed or not.
struct Operation {
    const char* name;
    std::function<void()> run;
    std::function<void(bool done)> after = [](bool) {};
};

class WithoutMemory : public testing::Test {
protected:
    void TearDown() override { vrlTerminateApplicationImpl(); }

    static void sweep(const std::vector<Operation>& operations) {
        for (const Operation& operation : operations) {
            SCOPED_TRACE(operation.name);
            const std::size_t arrays = qxLiveArrayCount();
            runWithEverMoreBlocks(operation.run, [&](bool done) {
                operation.after(done);
                EXPECT_EQ(qxLiveArrayCount(), arrays);
            });
        }
    }
};

TEST_F(WithoutMemory, APathMacroIsKeptWholeOrNotAtAll) {
    const std::string value = "/a/folder/with/a/name/that/needs/a/block";
    int round = 0;
    std::string name;
    const auto rename = [&] { name = "a macro whose name needs a block " + std::to_string(++round); };
    rename();
    runWithEverMoreBlocks([&] { vrlAddCanonicalPathMacro(name.c_str(), value.c_str()); },
                          [&](bool) {
                              const std::string expanded = vrlExpandPathMacros("$(" + name + ")");
                              EXPECT_TRUE(expanded == value || expanded == "$(" + name + ")") << expanded;
                              rename();
                          });
    EXPECT_EQ(vrlExpandPathMacros("$(a macro whose name needs a block " + std::to_string(round - 1) + ")"), value);
}

TEST_F(WithoutMemory, DefaultHandlersAreReplacedOrDropped) {
    const std::string big(100, 'x');
    const auto previous = std::make_shared<int>(0);
    const auto count = [previous](const char*) {
        ++*previous;
        return 0;
    };
    int printed = 0;
    const vrlPrintHandler next = [&printed, big](const char*) {
        ++printed;
        return 0;
    };
    vrlSetDefaultPrintHandlers(count, count);
    runWithEverMoreBlocks([&] { vrlSetDefaultPrintHandlers(next, next); },
                          [&](bool) {
                              krtPrint(nullptr, "text");
                              EXPECT_LE(printed, 1);
                              EXPECT_EQ(*previous, 0);
                              printed = 0;
                              vrlSetDefaultPrintHandlers(count, count);
                          });
    vrlSetDefaultPrintHandlers(next, next);
    krtPrint(nullptr, "text");
    EXPECT_EQ(printed, 1);
    vrlSetDefaultPrintHandlers({}, {});
    EXPECT_EQ(previous.use_count(), 2) << "here and in the lambda of this test";
}

TEST_F(WithoutMemory, TheRuntimeStartsOrStaysAsItWas) {
    const char* options[] = {"-nodisplay", "-logfile", "/dev/../dev/../dev/../dev/../dev/null"};
    const char* wrong[] = {"-an-option-that-is-too-long-for-a-string-without-a-block"};
    const auto stop = [](bool done) {
        EXPECT_EQ(vrlIsNoDisplaySet(), done);
        vrlTerminateApplicationImpl();
    };
    sweep({{"start", [&] { vrlInitializeApplicationImpl(options, 3); }, stop}});
    runWithEverMoreBlocks(
        [&] {
            try {
                vrlInitializeApplicationImpl(wrong, 1);
            } catch (const vrlBaseException& failure) {
                if (std::string_view(failure.what()) == "out of memory") {
                    throw;
                }
            }
        },
        [](bool) {});
}

TEST_F(WithoutMemory, TheStateIsToldAndTheRuntimeStops) {
    const char* options[] = {"-nojvm", "-logfile", "/dev/../dev/../dev/../dev/../dev/null"};
    vrlInitializeApplicationImpl(options, 3);
    const void* instance = vrlInitializeComponentInstance({}, {}, factoryOf(describeTestComponent()));
    heapBlocksLeft = 0;
    vrlStartFor(ourselves());
    const bool enabled = vrlIsJVMEnabled();
    const bool hidden = vrlIsNoDisplaySet();
    const char* name = vrlGetLogFileName();
    const void* active = vrlGetActiveHKRTINSTANCE();
    vrlTerminateApplicationImpl();
    heapBlocksLeft = -1;
    EXPECT_FALSE(enabled);
    EXPECT_FALSE(hidden);
    EXPECT_STREQ(name, options[2]);
    EXPECT_EQ(active, instance);
    EXPECT_FALSE(vrlIsKRTInitialized());
    EXPECT_EQ(vrlGetActiveHKRTINSTANCE(), nullptr);
}

TEST_F(WithoutMemory, AnInstanceIsMadeOrNotAndItsArchiveLikewise) {
    const vrlExtractedComponentFactory component = factoryOf(describeTestComponent());
    std::string bytes(1000, 'x');
    void* handle = nullptr;
    boost::shared_ptr<std::istream> stream;
    vrlkrt::KpaExtractor extractor;
    vrlExtractedComponentFactory factory;
    const auto end = [&](bool done) {
        EXPECT_EQ(handle != nullptr, done);
        if (handle != nullptr) {
            vrlTerminateInstanceInternal(std::exchange(handle, nullptr));
        }
    };
    sweep({
        {"instance", [&] { handle = vrlInitializeComponentInstance({}, {}, component); }, end},
        {"bytes", [&] { stream = vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size())); }},
        {"no archive", [&] { extractor = vrlMakeAlwaysFailExtractor("a component whose name needs a block"); }},
        {"archive", [&] { extractor = vrlMakeKpaStreamExtractor(stream); }},
        {"cache", [&] { factory = vrlMakeComponentCacheExtractedComponentFactory(extractor); }},
    });
}

TEST_F(WithoutMemory, AFunctionRunsOrFails) {
    TestInstance instance;
    const qxArrayOwner one(scalar(1));
    const qxArrayOwner greeting(text("a text that is too long for a string without a block"));
    const auto evaluation = [&](const char* name, const qxArray* input, int nrhs) {
        return Operation{name, [&instance, name, input, nrhs] {
                             qxArray* inputs[] = {const_cast<qxArray*>(input), const_cast<qxArray*>(input)};
                             qxArray* result = nullptr;
                             vrlLoomkitFeval(instance.handle(), name, 1, &result, nrhs, inputs);
                             qxDestroyArray(result);
                         }};
    };
    sweep({
        evaluation("add", one.get(), 2),
        evaluation("count", one.get(), 1),
        evaluation("print_text", greeting.get(), 1),
        evaluation("krt.functions", nullptr, 0),
        {"vrlGetComponentInfo", [&] { vrlGetComponentInfo(instance.handle()); }},
    });
    EXPECT_EQ(firstOf(instance.call1("add", {scalar(1), scalar(2)})), 3.0);
}

TEST_F(WithoutMemory, AFailureIsToldWithTheLinesThatThereIsRoomFor) {
    TestInstance instance;
    for (const char* function : {"failOuter", "fail_library", "fail_foreign", "raw_throw", "nothing_of_this_name"}) {
        SCOPED_TRACE(function);
        const std::string whole = instance.failureOf(function).message;
        std::string message;
        for (int blocks = 0; message != whole && blocks < 1000; ++blocks) {
            heapBlocksLeft = blocks;
            try {
                vrlLoomkitFeval(instance.handle(), function, 0, nullptr, 0, nullptr);
                heapBlocksLeft = -1;
            } catch (const vrlBaseException& failure) {
                heapBlocksLeft = -1;
                message = failure.getErrorMessage();
            }
            EXPECT_TRUE(message == whole || message == "out of memory") << message;
        }
        EXPECT_EQ(message, whole);
    }
}

TEST_F(WithoutMemory, TextForComponentsIsWholeOrNull) {
    const qxArrayOwner greeting(text("a text that is too long for a string without a block"));
    char* read = nullptr;
    const auto check = [&](std::size_t refused) {
        EXPECT_EQ(read == nullptr, refused != 0);
        krtFreeText(read);
    };
    const auto refusal = loomkit::test::Refusal::once;
    EXPECT_GT(loomkit::test::refuseEachBlock(
                  refusal, [&] { read = krtText(greeting.get()); }, check),
              1U);
}

TEST_F(WithoutMemory, PrintingNeverThrows) {
    const std::string text(100, 'x');
    int printed = 0;
    const vrlPrintHandler count = [&printed](const char*) {
        ++printed;
        return 0;
    };
    vrlSetDefaultPrintHandlers(count, count);
    const auto print = [&] {
        krtPrint(nullptr, text.c_str());
        krtWarn(nullptr, text.c_str());
        krtPrinter* printer = krtGetPrinter(nullptr);
        krtPrinterWarn(printer, text.c_str());
        krtReleasePrinter(printer);
    };
    runWithEverMoreBlocks(print, [](bool done) { EXPECT_TRUE(done); });
    vrlSetDefaultPrintHandlers({}, {});
    EXPECT_GT(printed, 0);
}

TEST(RuntimeOperation, LetsOnlyTheRuntimesFailuresOut) {
    using vrlbase::operation;
    EXPECT_EQ(operation([] { return 3; }), 3);
    EXPECT_THROW(operation([] { throw std::bad_alloc(); }), vrlBaseException);
    EXPECT_THROW(operation([] { throw vrlBaseException("known"); }), vrlBaseException);
    EXPECT_THROW(operation([] { throw std::runtime_error("not foreseen"); }), Norvane::vrl::vrlInternalException);
    heapBlocksLeft = 0;
    EXPECT_THROW(operation([] { throw std::overflow_error(""); }), vrlBaseException);
    const vrlBaseException copied = vrlBaseException::outOfMemory();
    const vrlBaseException again(copied);
    heapBlocksLeft = -1;
    EXPECT_STREQ(again.what(), "out of memory");
}

}  // namespace
