#include "archivetesting.h"
#include "craftedzip.h"

#include "vrlkrt/archive/componentcache.h"
#include "vrlkrt/archive/extraction.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

namespace {

/// A pipe between a test and its processes.
struct Pipe {
    Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
    ~Pipe() {
        close(ends[0]);
        close(ends[1]);
    }
    void put(std::uint64_t value) const { EXPECT_EQ(write(ends[1], &value, sizeof value), ssize_t{sizeof value}); }
    std::uint64_t get() const {
        std::uint64_t value = 0;
        EXPECT_EQ(read(ends[0], &value, sizeof value), ssize_t{sizeof value});
        return value;
    }
    std::array<int, 2> ends{};
};

/// Runs `body` in a process of its own, which ends with 0 unless an exception leaves it.
pid_t inProcess(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        try {
            body();
            _exit(0);
        } catch (const std::exception& error) {
            static_cast<void>(!write(STDERR_FILENO, error.what(), std::string(error.what()).size()));
            _exit(1);
        }
    }
    return child;
}

int exitStatus(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

/// Runs `body(number)` in several processes that start at once, and expects each to end well.
void together(int count, const std::function<void(int)>& body) {
    const Pipe start;
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        children.push_back(inProcess([&, i] {
            start.get();
            body(i);
        }));
    }
    for (int i = 0; i < count; ++i) {
        start.put(1);
    }
    for (const pid_t child : children) {
        EXPECT_EQ(exitStatus(child), 0);
    }
}

std::uint64_t inodeOf(const std::string& path) {
    struct stat state {};
    return stat(path.c_str(), &state) == 0 ? state.st_ino : 0;
}

std::string cacheFolderOf(const TestFolder& cache, const std::string& zip) {
    return cache / ("sample-" + archiveOf(zip).digest());
}

/// Stands where a process is in the middle of filling a folder of the cache: the lock held, some files there. Tells
/// through `ready`, then runs `next`.
void fillHalf(const std::string& cache, const std::string& zip, const Pipe& ready, const std::function<void()>& next) {
    const std::string key = "sample-" + archiveOf(zip).digest();
    const int lock = open((cache + "/" + key + ".lock").c_str(), O_RDWR | O_CREAT, 0600);
    if (flock(lock, LOCK_EX) != 0) {
        throw std::runtime_error("no lock");
    }
    const vrlkrt::StagingFolder staging(cache, key);
    writeText(staging.item("new/component.json"), "{");
    ready.put(1);
    next();
}

TEST(ComponentCache, KeysByDigestAndReuses) {
    const TestFolder cache;
    const std::string zip = CraftedComponent().zip();
    const vrlExtractedComponent first = vrlkrt::placeInCache(archiveOf(zip), cache / "new/folder");
    EXPECT_EQ(first.folder, cache / ("new/folder/sample-" + archiveOf(zip).digest()));
    const std::uint64_t inode = inodeOf(first.libraryFile);
    EXPECT_NE(inode, 0U);
    EXPECT_EQ(inodeOf(vrlkrt::placeInCache(archiveOf(zip), cache / "new/folder").libraryFile), inode);
    CraftedComponent other;
    other.files[1].content = "4 5 6";
    EXPECT_NE(vrlkrt::placeInCache(archiveOf(other.zip()), cache / "new/folder").folder, first.folder);
}

TEST(ComponentCache, RebuildsADamagedFolder) {
    const std::function<void(const std::string&)> damages[] = {
        [](const std::string& folder) { writeText(folder + "/lib/x.so", "LIBRARY"); },
        [](const std::string& folder) { std::filesystem::remove(folder + "/data/table.txt"); },
        [](const std::string& folder) { writeText(folder + "/component.json", "{}"); },
        [](const std::string& folder) { std::filesystem::remove_all(folder + "/lib"); },
        [](const std::string& folder) {
            std::filesystem::remove_all(folder);
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
    EXPECT_TRUE(vrlkrt::holdsWhole(cacheFolderOf(cache, zip), archiveOf(zip)));
}

TEST(FolderExtraction, SettlesAmongManyProcessesOfTwoVersions) {
    CraftedComponent versions[2];
    versions[1].files[1].content = std::string(1 << 18, 'y');
    const TestFolder root;
    together(6, [&](int number) {
        const vrlkrt::ComponentArchive archive = archiveOf(versions[number % 2].zip());
        for (int round = 0; round < 20; ++round) {
            const std::string failure =
                failureOf([&] { static_cast<void>(vrlkrt::placeInFolder(archive, root / "c")); });
            // While another one's component is in use, being told so is right.
            if (!failure.empty() && failure.find("an instance runs from") == std::string::npos) {
                throw std::runtime_error(failure);
            }
        }
    });
    EXPECT_EQ(namesIn(root.path()), "c ");
    EXPECT_TRUE(vrlkrt::holdsWhole(root / "c", archiveOf(versions[0].zip())) ||
                vrlkrt::holdsWhole(root / "c", archiveOf(versions[1].zip())));
}

TEST(ComponentCache, IsTakenOverFromAKilledProcess) {
    const TestFolder cache;
    const std::string zip = CraftedComponent().zip();
    const Pipe ready;
    const pid_t filler = inProcess([&] { fillHalf(cache.path(), zip, ready, [] { pause(); }); });
    ready.get();
    EXPECT_NE(namesIn(cache.path()).find(".sample-"), std::string::npos) << "nothing half-filled to take over";
    kill(filler, SIGKILL);
    exitStatus(filler);
    const vrlExtractedComponent placed = vrlkrt::placeInCache(archiveOf(zip), cache.path());
    EXPECT_TRUE(vrlkrt::holdsWhole(placed.folder, archiveOf(zip)));
    const std::string key = "sample-" + archiveOf(zip).digest();
    EXPECT_EQ(namesIn(cache.path()), key + " " + key + ".lock ");
}

/// Whether a process stands in line for a lock of this kind.
bool waitsForLock(pid_t process) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (line.find("-> FLOCK") != std::string::npos &&
            line.find(" " + std::to_string(process) + " ") != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(ComponentCache, WaitsForAProcessThatFills) {
    const TestFolder cache;
    const std::string zip = CraftedComponent().zip();
    const Pipe ready;
    const Pipe go;
    const pid_t filler = inProcess([&] {
        fillHalf(cache.path(), zip, ready, [&] {
            go.get();
            vrlkrt::extractAll(archiveOf(zip), cacheFolderOf(cache, zip));
        });
    });
    ready.get();
    const Pipe inode;
    const pid_t waiter =
        inProcess([&] { inode.put(inodeOf(vrlkrt::placeInCache(archiveOf(zip), cache.path()).libraryFile)); });
    while (!waitsForLock(waiter)) {
        int status = 0;
        ASSERT_EQ(waitpid(waiter, &status, WNOHANG), 0) << "did not wait";
        sched_yield();
    }
    go.put(1);
    EXPECT_EQ(exitStatus(filler), 0);
    EXPECT_EQ(exitStatus(waiter), 0);
    EXPECT_EQ(inode.get(), inodeOf(cacheFolderOf(cache, zip) + "/lib/x.so"));
}

TEST(ComponentCache, LeavesNothingOfABadArchive) {
    CraftedComponent component;
    component.manifest = component.defaultManifest();
    component.files.back().content = "other";
    const TestFolder cache;
    EXPECT_NE(failureOf([&] {
                  static_cast<void>(vrlkrt::placeInCache(archiveOf(component.zip()), cache.path()));
              }).find("does not match its SHA-256"),
              std::string::npos);
    EXPECT_EQ(namesIn(cache.path()), "sample-" + archiveOf(component.zip()).digest() + ".lock ");
}

TEST(ComponentCache, IsPrivateAndAFolder) {
    const TestFolder root;
    static_cast<void>(vrlkrt::placeInCache(archiveOf(CraftedComponent().zip()), root / "a/b"));
    struct stat state {};
    ASSERT_EQ(stat((root / "a/b").c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777, 0700U);
    ASSERT_EQ(chmod((root / "a/b").c_str(), 01777), 0);
    const std::string failure =
        failureOf([&] { static_cast<void>(vrlkrt::placeInCache(archiveOf(CraftedComponent().zip()), root / "a/b")); });
    EXPECT_EQ(failure, "The component cache " + (root / "a/b") + " can be written by everybody.");
    writeText(root / "file", "text");
    EXPECT_NE(failureOf([&] {
                  static_cast<void>(vrlkrt::placeInCache(archiveOf(CraftedComponent().zip()), root / "file"));
              }).find(root / "file"),
              std::string::npos);
}

}  // namespace
