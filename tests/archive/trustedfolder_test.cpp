#include "archivetesting.h"

#include "vrlkrt/archive/componentcache.h"
#include "vrlkrt/archive/extraction.h"
#include "vrlkrt/archive/trustedfolder.h"
#include "vrlkrt/run/componentlibrary.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

namespace fs = std::filesystem;

namespace {

/// What stands for a place: a folder, or a link to a good one.
struct Place {
    const char* name;
    uid_t owner;
    gid_t group;
    mode_t mode;
    const char* problem;  ///< nullptr where there is none
};

constexpr mode_t link = S_IFLNK;

const Place places[] = {
    {"own", 0, 0, 0755, nullptr},
    {"private-group", 0, 0, 0775, nullptr},
    {"own-link", 0, 0, link, nullptr},
    {"strange", strangeUser, 0, 0755, "/strange belongs to the user 54321, while this process runs as root (0)."},
    {"strange-closed", strangeUser, 0, 0700, "/strange-closed belongs to the user 54321"},
    {"strange-sticky", strangeUser, 0, 01777, "/strange-sticky belongs to the user 54321"},
    {"strange-link", strangeUser, 0, link, "/strange-link is a link that belongs to the user 54321"},
    {"team", 0, strangeUser, 0775,
     "/team belongs to the user root (0) and can be written by others of its group 54321"},
    {"open", 0, 0, 0707, "/open belongs to the user root (0) and can be written by everybody; 'chmod o-w' mends that."},
};

class TrustedFolder : public testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can make files of other users";
        }
        for (const Place& place : places) {
            const std::string path = root_ / place.name;
            fs::create_directory(place.mode == link ? path + "-target" : path);
            if (place.mode == link) {
                fs::create_directory_symlink(path + "-target", path);
            }
            ASSERT_EQ(lchown(path.c_str(), place.owner, place.group), 0);
            if (place.mode != link) {
                ASSERT_EQ(chmod(path.c_str(), place.mode), 0);
            }
        }
    }

    /// Expects the cache and an extraction to refuse `folder` with these words and to leave it as it is, or to take it.
    static void expectJudged(const std::string& folder, const char* problem) {
        const vrlkrt::ComponentArchive archive = archiveOf(CraftedComponent().zip());
        for (const bool isCache : {true, false}) {
            const std::string target = isCache ? folder : folder + "/c";
            const std::string failure = failureOf([&] {
                static_cast<void>(isCache ? vrlkrt::placeInCache(archive, target)
                                          : vrlkrt::placeInFolder(archive, target));
            });
            if (problem == nullptr) {
                EXPECT_EQ(failure, "");
                continue;
            }
            EXPECT_EQ(failure.find("Code isn't loaded from " + target), 0U) << failure;
            EXPECT_NE(failure.find(problem), std::string::npos) << failure;
            EXPECT_TRUE(!fs::exists(folder) || fs::is_empty(folder)) << folder;
        }
    }

    TestFolder root_;
};

TEST_F(TrustedFolder, AndTheWayToItAreOurs) {
    for (const Place& place : places) {
        expectJudged(root_ / place.name, place.problem);
        expectJudged((root_ / place.name) + "/below", place.problem);
    }
    ASSERT_EQ(chmod((root_ / "own").c_str(), 01777), 0);
    expectJudged(root_ / "own/in-a-sticky-one", nullptr);
    expectFailure("by everybody", [&] { vrlkrt::requireTrustedFolder(root_ / "own"); });
    fs::create_directory_symlink("strange/..", root_ / "through");
    expectFailure("/strange belongs", [&] { vrlkrt::requireTrustedFolder(root_ / "through/own"); });
    fs::create_directory_symlink("loop", root_ / "loop");
    EXPECT_NE(failureOf([&] { return vrlkrt::placeInFolder(archiveOf(CraftedComponent().zip()), root_ / "loop/c"); }),
              "");
}

/// An access list in the kernel's form: entries of a tag, permissions and an identity after a version.
struct AccessList {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t identity;
    };
    std::uint32_t version = 2;
    Entry entries[5] = {{0x01, 7, ~0U}, {0x02, 7, strangeUser}, {0x04, 5, ~0U}, {0x10, 7, ~0U}, {0x20, 5, ~0U}};
};

TEST_F(TrustedFolder, MayNotLetInOthersByAnAccessList) {
    const AccessList list;
    if (setxattr((root_ / "own").c_str(), "system.posix_acl_access", &list, sizeof list, 0) != 0) {
        GTEST_SKIP() << "no access lists on this file system";
    }
    expectJudged(root_ / "own", "can be written by others of its group");
}

TEST_F(TrustedFolder, HasNothingOfOthersInside) {
    const std::function<void(const std::string&)> intrusions[] = {
        [](const std::string& folder) { lchown((folder + "/lib").c_str(), strangeUser, 0); },
        [](const std::string& folder) { lchown((folder + "/lib/x.so").c_str(), strangeUser, 0); },
        [](const std::string& folder) { chmod((folder + "/lib/x.so").c_str(), 0666); },
        [](const std::string& folder) { chmod((folder + "/data").c_str(), 01777); },
        [](const std::string& folder) { chmod(folder.c_str(), 0777); },
        [](const std::string& folder) {
            fs::rename(folder + "/lib", folder + "/library");
            fs::create_directory_symlink("library", folder + "/lib");
        },
    };
    const vrlkrt::ComponentArchive archive = archiveOf(CraftedComponent().zip());
    for (const auto& intrude : intrusions) {
        const std::string folder = vrlkrt::placeInCache(archive, root_ / "cache").folder;
        const auto whole = filesBelow(folder);
        intrude(folder);
        EXPECT_FALSE(vrlkrt::isTrustedInside(folder));
        EXPECT_EQ(vrlkrt::placeInCache(archive, root_ / "cache").folder, folder);
        EXPECT_TRUE(vrlkrt::isTrustedInside(folder)) << "not rebuilt";
        EXPECT_EQ(filesBelow(folder), whole);
    }
}

TEST(ComponentLibrary, IsTheFileThatWasChecked) {
    const TestFolder root;
    const vrlExtractedComponent placed = vrlkrt::placeInFolder(archiveOf(CraftedComponent().zip()), root / "c");
    const auto load = [&] { vrlkrt::ComponentLibrary("sample", placed.libraryFile, placed.libraryState); };
    EXPECT_NE(failureOf(load).find("can't be loaded"), std::string::npos) << "it is no library";
    fs::rename(placed.libraryFile, root / "before");
    fs::copy_file(root / "before", placed.libraryFile);
    EXPECT_NE(failureOf(load).find("was changed after its content was compared"), std::string::npos);
}

}  // namespace
