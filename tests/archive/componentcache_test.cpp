#include "archivetesting.h"
#include "processes.h"

#include "support/heapblocks.h"

#include "vrlkrt/archive/componentcache.h"
#include "vrlkrt/archive/extraction.h"
#include "vrlkrt/archive/trustedfolder.h"

#include "vrlbase/vrlbase.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <new>

namespace fs = std::filesystem;

namespace {

bool isWholeIn(const std::string& folder, const std::string& zip) {
    const auto lease = vrlkrt::FolderLease::take(folder, vrlkrt::deadlineIn({}));
    return vrlkrt::wholeComponent(archiveOf(zip), folder, lease).has_value();
}

std::string keyOf(const std::string& zip) { return "sample-" + archiveOf(zip).digest(); }

TEST(ComponentCache, KeysByDigestReusesAndIsPrivate) {
    const TestFolder root;
    const std::string cache = root / "new/folder";
    CraftedComponent component;
    const std::string zip = component.zip();
    const mode_t mask = umask(0);
    const vrlExtractedComponent first = vrlkrt::placeInCache(archiveOf(zip), cache);
    umask(mask);
    EXPECT_EQ(first.folder, cache + "/" + keyOf(zip));
    const std::uint64_t inode = inodeOf(first.libraryFile);
    EXPECT_NE(inode, 0U);
    EXPECT_EQ(inodeOf(vrlkrt::placeInCache(archiveOf(zip), cache).libraryFile), inode);
    for (const std::string& folder : {root / "new", cache}) {
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all) << folder;
    }
    EXPECT_TRUE(vrlkrt::isTrustedInside(root / "new"));

    component.manifest = component.defaultManifest();
    component.files[1].content = "not what was packed";
    expectFailure("does not match its SHA-256",
                  [&] { return vrlkrt::placeInCache(archiveOf(component.zip()), cache); });
    EXPECT_EQ(fs::exists(cache + "/" + keyOf(component.zip())), false);
    component.manifest = "";
    EXPECT_NE(vrlkrt::placeInCache(archiveOf(component.zip()), cache).folder, first.folder);
    EXPECT_EQ(namesIn(cache).find(".loomkit"), std::string::npos);
}

TEST(ComponentCache, IsFilledAndReadOrLeftAloneWithoutMemory) {
    const TestFolder root;
    const std::string cache = root / "cache";
    const std::string zip = CraftedComponent().zip();
    const std::string folder = cache + "/" + keyOf(zip);
    for (const bool isThere : {false, true}) {
        std::string placed;
        const auto place = [&] {
            placed = "";
            try {
                const vrlkrt::ComponentArchive archive = archiveOf(zip);
                archive.verify();
                placed = vrlkrt::placeInCache(archive, cache).folder;
            } catch (const std::exception& failure) {
                placed = dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ? "no memory" : "refused";
            }
        };
        const auto check = [&](std::size_t refused) {
            EXPECT_TRUE(placed == folder || refused != 0) << placed << " without block " << refused;
            if (!isThere) {
                EXPECT_TRUE(!fs::exists(folder) || isWholeIn(folder, zip)) << "without block " << refused;
                fs::remove_all(cache);
            }
        };
        place();
        check(0);
        EXPECT_GT(loomkit::test::refuseEachBlock(loomkit::test::Refusal::once, place, check), 100U);
    }
    EXPECT_EQ(namesIn(cache).find(".loomkit"), std::string::npos);
}

TEST(ComponentCache, RebuildsADamagedFolder) {
    const std::function<void(const std::string&)> damages[] = {
        [](const std::string& folder) { writeText(folder + "/lib/x.so", "LIBRARY"); },
        [](const std::string& folder) { fs::remove(folder + "/data/table.txt"); },
        [](const std::string& folder) { writeText(folder + "/component.json", "{}"); },
        [](const std::string& folder) { fs::remove_all(folder + "/lib"); },
        [](const std::string& folder) {
            fs::remove_all(folder);
            writeText(folder, "a file");
        },
    };
    const TestFolder cache;
    const std::string zip = CraftedComponent().zip();
    const std::string folder = vrlkrt::placeInCache(archiveOf(zip), cache.path()).folder;
    const auto whole = filesBelow(folder);
    const std::string names = namesIn(cache.path());
    for (const auto& damage : damages) {
        damage(folder);
        EXPECT_EQ(vrlkrt::placeInCache(archiveOf(zip), cache.path()).folder, folder);
        EXPECT_EQ(filesBelow(folder), whole);
        EXPECT_EQ(namesIn(cache.path()), names);
    }
}

TEST(ComponentCache, IsFilledOnceByManyProcesses) {
    constexpr int count = 6;
    const TestFolder cache;
    CraftedComponent large;
    large.files.push_back({"data/large.bin", std::string(1 << 20, 'x')});
    const std::string zip = large.zip();
    const Pipe inodes;
    together(count, [&](int) { inodes.put(inodeOf(vrlkrt::placeInCache(archiveOf(zip), cache.path()).libraryFile)); });
    const std::uint64_t first = inodes.get();
    EXPECT_NE(first, 0U);
    for (int i = 1; i < count; ++i) {
        EXPECT_EQ(inodes.get(), first);
    }
    EXPECT_TRUE(isWholeIn(cache / keyOf(zip), zip));
}

TEST(FolderExtraction, SettlesAmongManyProcessesOfTwoVersions) {
    CraftedComponent versions[2];
    versions[1].files[1].content = std::string(1 << 18, 'y');
    const TestFolder root;
    together(6, [&](int number) {
        const vrlkrt::ComponentArchive archive = archiveOf(versions[number % 2].zip());
        for (int round = 0; round < 20; ++round) {
            const std::string failure = failureOf([&] { return vrlkrt::placeInFolder(archive, root / "c"); });
            // While another one's component is in use, being told so is right.
            if (!failure.empty() && failure.find("an instance runs from") == std::string::npos) {
                throw std::runtime_error(failure);
            }
        }
    });
    EXPECT_EQ(namesIn(root.path()), "c ");
    EXPECT_TRUE(isWholeIn(root / "c", versions[0].zip()) || isWholeIn(root / "c", versions[1].zip()));
}

/// Lets a process run `body` over and over and kills it, a hundred times, each time a little later in the course of it.
void killAHundred(const std::function<void()>& body) {
    const Pipe ready;
    for (int round = 0; round < 100; ++round) {
        const pid_t child = inProcess([&] {
            for (ready.put(1);;) {
                body();
            }
        });
        ready.get();
        const auto end = std::chrono::steady_clock::now() + round * std::chrono::microseconds(73);
        while (std::chrono::steady_clock::now() < end) {
            sched_yield();
        }
        kill(child, SIGKILL);
        ASSERT_TRUE(WIFSIGNALED(exitStatus(child))) << "ended by itself";
    }
}

TEST(Extraction, IsSweptAfterKilledProcesses) {
    CraftedComponent versions[2];
    versions[1].files[1].content = std::string(1 << 16, 'y');
    for (const bool isCache : {true, false}) {
        const TestFolder root;
        const std::string zips[] = {versions[isCache ? 1 : 0].zip(), versions[1].zip()};
        const auto place = [&](const std::string& zip) {
            return isCache ? vrlkrt::placeInCache(archiveOf(zip), root.path())
                           : vrlkrt::placeInFolder(archiveOf(zip), root / "c");
        };
        const auto damage = [&](const vrlExtractedComponent& placed) {
            if (isCache) {
                writeText(placed.libraryFile, "damaged, so that there is something to be done");
            }
        };
        killAHundred([&] {
            for (const std::string& zip : zips) {
                damage(place(zip));
            }
        });
        for (const std::string& zip : zips) {
            const vrlExtractedComponent placed = place(zip);
            EXPECT_TRUE(isWholeIn(placed.folder, zip));
            damage(placed);
        }
        EXPECT_EQ(namesIn(root.path()), isCache ? keyOf(zips[0]) + " " + keyOf(zips[0]) + ".lock " : "c ");
    }
}

TEST(ComponentCache, WaitsForAProcessThatFillsOrIsKilled) {
    for (const bool isKilled : {true, false}) {
        const TestFolder root;
        const std::string cache = root / "cache";
        const std::string zip = CraftedComponent().zip();
        vrlkrt::makeFolders(cache, 0700);
        const std::string folder = cache + "/" + keyOf(zip);
        const Pipe ready;
        const Pipe go;
        // Stands in the middle of filling a folder of the cache: the lock held, some files there.
        const pid_t filler = inProcess([&] {
            const vrlkrt::OpenFile lock(open((folder + ".lock").c_str(), O_RDWR | O_CREAT, 0600));
            if (flock(lock.get(), LOCK_EX) != 0) {
                throw std::runtime_error("no lock");
            }
            const vrlkrt::StagingFolder staging(cache);
            writeText(staging.fresh() + "/component.json", "{");
            ready.put(1);
            go.get();
            vrlkrt::extractAll(archiveOf(zip), folder);
        });
        ready.get();
        EXPECT_NE(namesIn(cache).find(".loomkit-unpacking-"), std::string::npos) << "nothing half-filled";
        const Pipe inode;
        const std::string log = root / "log";
        const pid_t waiter = inProcess([&] {
            const char* options[] = {"-logfile", log.c_str()};
            vrlInitializeApplicationImpl(options, 2);
            inode.put(inodeOf(vrlkrt::placeInCache(archiveOf(zip), cache).libraryFile));
        });
        while (readText(log).find("Waiting for the lock on " + folder + ".lock") == std::string::npos) {
            int status = 0;
            ASSERT_EQ(waitpid(waiter, &status, WNOHANG), 0) << "did not wait";
            sched_yield();
        }
        isKilled ? static_cast<void>(kill(filler, SIGKILL)) : go.put(1);
        EXPECT_EQ(exitStatus(filler), isKilled ? SIGKILL : 0);
        EXPECT_EQ(exitStatus(waiter), 0);
        EXPECT_EQ(inode.get(), inodeOf(folder + "/lib/x.so"));
        EXPECT_EQ(namesIn(cache), keyOf(zip) + " " + keyOf(zip) + ".lock ");
    }
}

TEST(Extraction, GivesUpWaitingForALockThatIsHeld) {
    const TestFolder root;
    const std::string zip = CraftedComponent().zip();
    const std::string inCache = vrlkrt::placeInCache(archiveOf(zip), root / "cache").folder;
    static_cast<void>(vrlkrt::placeInFolder(archiveOf(zip), root / "c"));
    constexpr std::chrono::milliseconds patience(20);
    for (const std::string& held :
         {inCache + ".lock", inCache + "/component.json", root / "c", root / "c/component.json"}) {
        const vrlkrt::OpenFile lock(open(held.c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_EQ(flock(lock.get(), LOCK_EX), 0) << held;
        const std::string failure = failureOf([&] {
            static_cast<void>(held.find(root / "cache") == 0
                                  ? vrlkrt::placeInCache(archiveOf(zip), root / "cache", patience)
                                  : vrlkrt::placeInFolder(archiveOf(zip), root / "c", patience));
        });
        EXPECT_EQ(failure, "Gave up waiting for the lock on " + held + ", which another process holds.");
    }
}

TEST(ComponentCache, ServesWhatItHoldsWhenItCantBeWritten) {
    const TestFolder root;
    ASSERT_EQ(chmod(root.path().c_str(), 0755), 0);
    const std::string cache = root / "cache";
    const std::string zip = CraftedComponent().zip();
    const std::string other = otherVersion().zip();
    const std::string folder = vrlkrt::placeInCache(archiveOf(zip), cache).folder;
    ASSERT_EQ(unlink((folder + ".lock").c_str()), 0);
    ASSERT_EQ(chmod(cache.c_str(), 0555), 0);
    const pid_t reader = inProcess([&] {
        // To root everything can be written.
        if (geteuid() == 0 && setresuid(strangeUser, strangeUser, strangeUser) != 0) {
            throw std::runtime_error("can't become another user");
        }
        if (vrlkrt::placeInCache(archiveOf(zip), cache).folder != folder) {
            throw std::runtime_error("another folder");
        }
        const std::string failure = failureOf([&] { return vrlkrt::placeInCache(archiveOf(other), cache); });
        if (failure.find("Can't open the lock file " + cache) != 0) {
            throw std::runtime_error("not refused: " + failure);
        }
    });
    EXPECT_EQ(exitStatus(reader), 0);
    EXPECT_EQ(namesIn(cache), keyOf(zip) + " ");
    ASSERT_EQ(chmod(cache.c_str(), 0700), 0);
}

TEST(ComponentCache, IsTheFirstFolderThatCanBeMade) {
    const TestFolder root;
    EXPECT_EQ(vrlkrt::chooseCache({root / "a/b", root / "c"}), root / "a/b");
    EXPECT_EQ(vrlkrt::chooseCache({"/proc/self/.cache/loomkit", root / "c"}), root / "c");
    EXPECT_EQ(namesIn(root.path()), "a c ");
    EXPECT_EQ(vrlkrt::chooseCache({"/dev/null/a", "/proc/self/b"}), "/proc/self/b");
    expectFailure("Can't make the folder /proc/self/b: ",
                  [] { return vrlkrt::placeInCache(archiveOf(CraftedComponent().zip()), "/proc/self/b"); });
}

}  // namespace
