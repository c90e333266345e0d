#include "krt/component.h"
#include "support/heapblocks.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/vrlkrt.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace {

using loomkit::test::heapBlocksLeft;

/// Runs `operation` with this number of blocks to be had. Whether it needed fewer.
template <typename Operation>
bool fitsInto(int blocks, const Operation& operation) {
    heapBlocksLeft = blocks;
    bool threw = false;
    try {
        operation();
    } catch (const std::bad_alloc&) {
        threw = true;
    }
    const bool fits = heapBlocksLeft > 0;
    heapBlocksLeft = -1;
    EXPECT_FALSE(threw) << "with " << blocks << " blocks";
    return fits && !threw;
}

constexpr int plenty = 100;

TEST(WithoutMemory, APathMacroIsKeptWholeOrNotAtAll) {
    const std::string value = "/a/folder/with/a/name/that/needs/a/block";
    int blocks = 0;
    bool fits = false;
    for (; !fits && blocks < plenty; ++blocks) {
        const std::string name = "a macro whose name needs a block " + std::to_string(blocks);
        fits = fitsInto(blocks, [&] { vrlAddCanonicalPathMacro(name.c_str(), value.c_str()); });
        const std::string expanded = vrlExpandPathMacros("$(" + name + ")");
        EXPECT_TRUE(expanded == value || (!fits && expanded == "$(" + name + ")")) << expanded;
    }
    EXPECT_TRUE(fits);
    EXPECT_GT(blocks, 1) << "no block was refused";
}

TEST(WithoutMemory, DefaultHandlersAreReplacedOrDropped) {
    const std::string big(100, 'x');
    const auto previous = std::make_shared<int>(0);
    int blocks = 0;
    bool fits = false;
    for (; !fits && blocks < plenty; ++blocks) {
        const auto count = [previous](const char*) {
            ++*previous;
            return 0;
        };
        vrlSetDefaultPrintHandlers(count, count);
        int printed = 0;
        const vrlPrintHandler next = [&printed, big](const char*) {
            ++printed;
            return 0;
        };
        fits = fitsInto(blocks, [&] { vrlSetDefaultPrintHandlers(next, next); });
        krtPrint(nullptr, "text");
        EXPECT_TRUE(printed == 1 || (!fits && printed == 0)) << printed;
        EXPECT_EQ(*previous, 0);
        vrlSetDefaultPrintHandlers({}, {});
    }
    EXPECT_TRUE(fits);
    EXPECT_GT(blocks, 1) << "no block was refused";
    EXPECT_EQ(previous.use_count(), 1);
}

TEST(WithoutMemory, TheStateIsTold) {
    const char* options[] = {"-nojvm", "-logfile", "/dev/../dev/../dev/../dev/../dev/null"};
    vrlInitializeApplicationImpl(options, 3);
    bool enabled = true;
    bool hidden = true;
    const char* name = nullptr;
    fitsInto(0, [&] {
        vrlStartIfStopped();
        enabled = vrlIsJVMEnabled();
        hidden = vrlIsNoDisplaySet();
        name = vrlGetLogFileName();
    });
    EXPECT_FALSE(enabled);
    EXPECT_FALSE(hidden);
    EXPECT_STREQ(name, options[2]);
    vrlTerminateApplicationImpl();
}

}  // namespace
