#include "testcomponent.h"

#include "support/testfolder.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/unload.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <optional>
#include <thread>
#include <tuple>

namespace {

using loomkit::test::readText;
using loomkit::test::TestFolder;
using Norvane::vrl::vrlBaseException;

class Options : public testing::Test {
protected:
    void SetUp() override { vrlTerminateApplicationImpl(); }
    void TearDown() override { vrlTerminateApplicationImpl(); }

    static void start(std::vector<const char*> options) {
        vrlInitializeApplicationImpl(options.data(), static_cast<unsigned>(options.size()));
    }
    static std::string failureOf(std::vector<const char*> options) {
        try {
            start(std::move(options));
        } catch (const vrlBaseException& failure) {
            return failure.what();
        }
        return {};
    }

    const TestFolder folder_;
};

TEST_F(Options, AreAllReadAndGoWithTheEnd) {
    const std::string log = folder_ / "log";
    start({"-nojvm", nullptr, "-logfile", log.c_str(), "-nodisplay", "-cachedir", folder_.path().c_str()});
    EXPECT_TRUE(vrlIsKRTInitialized());
    EXPECT_FALSE(vrlIsJVMEnabled());
    EXPECT_TRUE(vrlIsNoDisplaySet());
    const char* name = vrlGetLogFileName();
    EXPECT_EQ(vrlGetCacheDirectories(), std::vector<std::string>{folder_.path()});
    vrlTerminateApplicationImpl();
    EXPECT_EQ(name, log) << "the name stays";
    EXPECT_FALSE(vrlIsKRTInitialized());
    EXPECT_TRUE(vrlIsJVMEnabled());
    EXPECT_FALSE(vrlIsNoDisplaySet());
    EXPECT_STREQ(vrlGetLogFileName(), "");
    EXPECT_NE(vrlGetCacheDirectories().front(), folder_.path());
    EXPECT_FALSE(vrlIsKcc());
    vrlInitializeApplicationImpl(nullptr, 0);
    EXPECT_TRUE(vrlIsKRTInitialized());
    start({"-nodisplay"});
    start({"-nojvm"});
    EXPECT_FALSE(vrlIsNoDisplaySet()) << "a second start replaces the options of the first";
    EXPECT_FALSE(vrlIsJVMEnabled());
}

TEST_F(Options, ThatAreWrongAreNamedAndChangeNothing) {
    const std::string log = folder_ / "log";
    start({"-logfile", log.c_str()});
    const std::string unwritable = folder_ / "no/such/folder";
    const std::pair<std::vector<const char*>, std::vector<const char*>> cases[] = {
        {{"-nodisplay", "-fast"}, {"\"-fast\""}},
        {{"-nodisplay", "-logfile"}, {"-logfile", "FILE"}},
        {{"-logfile", nullptr}, {"-logfile", "FILE"}},
        {{"-cachedir", "-nojvm"}, {"-cachedir", "DIR"}},
        {{"-cachedir", ""}, {"-cachedir", "DIR"}},
        {{"-nodisplay", "-logfile", unwritable.c_str()}, {"-logfile", unwritable.c_str()}},
        {{"-nodisplay", "-cachedir", log.c_str()}, {"-cachedir", log.c_str()}}};
    for (const auto& [options, expectedNamed] : cases) {
        const std::string message = failureOf(options);
        for (const char* named : expectedNamed) {
            EXPECT_NE(message.find(named), std::string::npos) << named << " in: " << message;
        }
        EXPECT_FALSE(vrlIsNoDisplaySet());
        EXPECT_EQ(vrlGetLogFileName(), log);
    }
}

TEST_F(Options, OfAStartAreWholeWhoeverElseStarts) {
    for (int round = 0; round < 200; ++round) {
        const std::string logs[] = {folder_ / "one", folder_ / "two"};
        std::vector<std::thread> starters;
        for (const std::string& log : logs) {
            starters.emplace_back([&log] { start({"-nodisplay", "-logfile", log.c_str()}); });
            starters.emplace_back(vrlStartFor, ourselves());
        }
        for (std::thread& starter : starters) {
            starter.join();
        }
        EXPECT_TRUE(vrlIsNoDisplaySet()) << "round " << round;
        vrlWriteLog("x");
        EXPECT_EQ(readText(vrlGetLogFileName()), "x") << "round " << round;
        vrlTerminateApplicationImpl();
        for (const std::string& log : logs) {
            std::filesystem::remove(log);
        }
    }
}

TEST_F(Options, StayUntilTheLastLibraryStops) {
    vrlLibrary other = vrlLibraryAt(reinterpret_cast<const void*>(&std::fopen));
    ASSERT_NE(other, ourselves());
    start({"-nodisplay"});
    vrlStartFor(other);
    for (vrlLibrary leaving : {ourselves(), ourselves(), other}) {
        EXPECT_TRUE(vrlIsKRTInitialized() && vrlIsNoDisplaySet());
        vrlStopFor(leaving);
    }
    EXPECT_FALSE(vrlIsKRTInitialized() || vrlIsNoDisplaySet());

    vrlStartFor(other);
    start({"-nodisplay"});
    vrlForgetLibrary(reinterpret_cast<const void*>(&std::fopen));
    start({});  // a second start of ours, which takes its options over
    EXPECT_TRUE(vrlIsKRTInitialized() && !vrlIsNoDisplaySet());
    vrlStartFor(other);
    start({"-nodisplay"});
    vrlTerminateApplicationImpl();
    start({});  // joins the other one's
    EXPECT_TRUE(vrlIsKRTInitialized() && vrlIsNoDisplaySet());
    vrlStopFor(other);
    vrlTerminateApplicationImpl();
    EXPECT_FALSE(vrlIsKRTInitialized());
}

TEST_F(Options, CacheFolderIsTheUsersOwn) {
    const auto change = [](const char* name, const char* value) {
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    };
    std::optional<std::string> old[2];
    for (const auto& [index, name] : {std::pair(0, "XDG_CACHE_HOME"), std::pair(1, "HOME")}) {
        if (const char* value = std::getenv(name)) {
            old[index] = value;
        }
    }
    const std::string home = folder_.path();
    const std::string own = (std::filesystem::temp_directory_path() / ("loomkit-" + std::to_string(getuid()))).string();
    const std::tuple<const char*, const char*, std::string> cases[] = {
        {"/x", home.c_str(), "/x/loomkit/components"},
        {"x", home.c_str(), home + "/.cache/loomkit/components"},
        {nullptr, home.c_str(), home + "/.cache/loomkit/components"},
        {nullptr, "/no/such/home", own + "/components"},
        {nullptr, nullptr, own + "/components"}};
    for (const auto& [xdg, home, folder] : cases) {
        change("XDG_CACHE_HOME", xdg);
        change("HOME", home);
        EXPECT_EQ(vrlGetCacheDirectories().front(), folder);
        EXPECT_EQ(vrlGetCacheDirectories().back(), own + "/components");
    }
    change("XDG_CACHE_HOME", old[0] ? old[0]->c_str() : nullptr);
    change("HOME", old[1] ? old[1]->c_str() : nullptr);
}

TEST_F(Options, ExpandMacrosInPathsAndTheLogFileKeepsWhatItHeld) {
    vrlSetPathMacro("TEST_FOLDER", folder_.path().c_str());
    vrlSetPathMacro(nullptr, "x");
    vrlSetPathMacro("TEST_FOLDER", nullptr);
    EXPECT_EQ(vrlExpandPathMacros("$(TEST_FOLDER"), "$(TEST_FOLDER");
    EXPECT_EQ(vrlExpandPathMacros("$$(TEST_FOLDER)$"), "$" + folder_.path() + "$");
    for (const char* text : {"one\n", "two\n"}) {
        start({"-logfile", "$(TEST_FOLDER)/log"});
        EXPECT_EQ(vrlGetLogFileName(), folder_ / "log");
        vrlWriteLog(text);
        vrlWriteLog(nullptr);
        vrlTerminateApplicationImpl();
        vrlWriteLog("dropped\n");
    }
    EXPECT_EQ(readText(folder_ / "log"), "one\ntwo\n");
}

TEST(RuntimeMutex, IsRecursiveAndIgnoresAStrayRelease) {
    vrlReleaseMutex();
    vrlAcquireMutex();
    vrlAcquireMutex();
    std::thread([] { vrlReleaseMutex(); }).join();
    vrlReleaseMutex();
    std::promise<void> entered;
    std::future<void> done = entered.get_future();
    bool held = true;
    bool heldWhenEntered = true;
    std::thread other([&] {
        vrlAcquireMutex();
        heldWhenEntered = held;
        vrlReleaseMutex();
        entered.set_value();
    });
    held = false;
    vrlReleaseMutex();
    done.wait();
    other.join();
    EXPECT_FALSE(heldWhenEntered);
}

}  // namespace
