#include "archivetesting.h"
#include "craftedzip.h"

#include "vrlkrt/archive/extraction.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

/// Stands before the one of the system: the file whose name ends so is closed with a failure that comes late.
static const char* lateFailure = nullptr;

extern "C" int close(int descriptor) {
    std::error_code none;
    const std::string path = fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none).string();
    const bool fails = lateFailure != nullptr && path.find(lateFailure) != std::string::npos;
    const long result = syscall(SYS_close, descriptor);
    if (fails) {
        errno = EDQUOT;
    }
    return fails ? -1 : static_cast<int>(result);
}

namespace {

std::map<std::string, std::string> expectedFiles(const CraftedComponent& component) {
    std::map<std::string, std::string> files{{"component.json", component.defaultManifest()}};
    for (const CraftedEntry& entry : component.files) {
        files[entry.path] = entry.content;
    }
    return files;
}

vrlExtractedComponent place(const CraftedComponent& component, const std::string& folder) {
    return vrlkrt::placeInFolder(archiveOf(component.zip()), folder);
}

TEST(FolderExtraction, MakesTheFolderAndItsParents) {
    const TestFolder root;
    const vrlExtractedComponent placed = place(CraftedComponent(), root / "a/b/c/");
    EXPECT_EQ(placed.folder, root / "a/b/c");
    EXPECT_EQ(placed.libraryFile, root / "a/b/c/lib/x.so");
    EXPECT_EQ(placed.functions.at(0).name, "twice");
    EXPECT_EQ(filesBelow(placed.folder), expectedFiles(CraftedComponent()));
    EXPECT_EQ(namesIn(root / "a/b"), "c ");
}

TEST(FolderExtraction, TakesAnEmptyFolderAndReusesAWholeOne) {
    const TestFolder root;
    fs::create_directory(root / "c");
    const std::string folder = place(CraftedComponent(), root / "c").folder;
    struct stat before {};
    struct stat after {};
    stat((root / "c/component.json").c_str(), &before);
    EXPECT_EQ(place(CraftedComponent(), root / "c").folder, folder);
    stat((root / "c/component.json").c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST(FolderExtraction, FollowsALinkToTheFolder) {
    const TestFolder root;
    fs::create_directory(root / "true");
    fs::create_directory_symlink(root / "true", root / "link");
    EXPECT_EQ(place(CraftedComponent(), root / "link").folder, root / "true");
    EXPECT_TRUE(fs::is_symlink(root / "link"));
}

TEST(FolderExtraction, ReplacesADamagedOneAndAnotherVersion) {
    const TestFolder root;
    place(CraftedComponent(), root / "c");
    writeText(root / "c/lib/x.so", "damaged");
    place(CraftedComponent(), root / "c");
    EXPECT_EQ(filesBelow(root / "c"), expectedFiles(CraftedComponent()));
    place(otherVersion(), root / "c");
    EXPECT_EQ(filesBelow(root / "c"), expectedFiles(otherVersion()));
    EXPECT_EQ(namesIn(root.path()), "c ");
}

TEST(FolderExtraction, NeverReplacesWhatAnInstanceRunsFrom) {
    const TestFolder root;
    {
        const vrlExtractedComponent running = place(CraftedComponent(), root / "c");
        EXPECT_NE(failureOf([&] { place(otherVersion(), root / "c"); }).find("an instance runs from"),
                  std::string::npos);
        EXPECT_EQ(filesBelow(root / "c"), expectedFiles(CraftedComponent()));
    }
    EXPECT_EQ(failureOf([&] { place(otherVersion(), root / "c"); }), "");
}

TEST(FolderExtraction, RefusesAndKeepsWhatIsNotOurs) {
    struct Case {
        std::string path;
        std::string message;
    };
    CraftedComponent stranger;
    stranger.name = "stranger";
    const TestFolder root;
    place(stranger, root / "stranger");
    place(CraftedComponent(), root / "extended");
    writeText(root / "extended/notes/mine.txt", "mine");
    place(CraftedComponent(), root / "linked");
    fs::remove(root / "linked/data/table.txt");
    fs::create_directory_symlink(root.path(), root / "linked/elsewhere");
    writeText(root / "foreign/photo.jpg", "photo");
    writeText(root / "npm/component.json", "{\"name\": \"npm\"}");
    writeText(root / "file", "text");
    const Case cases[] = {
        {"stranger", "the folder holds another component, 'stranger'"},
        {"extended", "the folder has 'notes', which is not the component's"},
        {"linked", "the folder has 'elsewhere', which is not the component's"},
        {"foreign", "the folder is not empty, and holds no component"},
        {"npm", "its component.json is not that of an extracted component"},
        {"file", "it is there and is not a folder"},
        {"file/below", "Not a directory"},
    };
    for (const Case& c : cases) {
        const auto before = filesBelow(root.path());
        const std::string failure = failureOf([&] { place(otherVersion(), root / c.path); });
        EXPECT_NE(failure.find(c.message), std::string::npos) << failure;
        EXPECT_NE(failure.find(root / c.path.substr(0, 4)), std::string::npos) << failure;
        EXPECT_EQ(filesBelow(root.path()), before) << c.path;
    }
    EXPECT_NE(failureOf([&] { place(CraftedComponent(), ""); }).find("No folder"), std::string::npos);
}

TEST(FolderExtraction, LeavesNothingBehindWhenItFails) {
    const TestFolder root;
    CraftedComponent component;
    component.manifest = component.defaultManifest();
    component.files.back().content = "not what was packed";
    EXPECT_NE(failureOf([&] { place(component, root / "c"); }).find("data/table.txt"), std::string::npos);
    EXPECT_EQ(namesIn(root.path()), "");
    lateFailure = "table.txt";
    const std::string failure = failureOf([&] { place(CraftedComponent(), root / "c"); });
    lateFailure = nullptr;
    EXPECT_EQ(failure.find("Can't write " + root.path()), 0U) << failure;
    EXPECT_NE(failure.find("data/table.txt: Disk quota exceeded."), std::string::npos) << failure;
    EXPECT_EQ(namesIn(root.path()), "");
}

TEST(FolderExtraction, SweepsNothingButWhatItLeft) {
    const TestFolder root;
    const std::string marker = "/loomkit-unpacking";
    for (const char* kept : {".c.config/deep/mine.txt", ".c.backup/mine.txt", ".loomkit-unpacking-mine00/mine.txt",
                             ".loomkit-unpacking-mine01/new/mine.txt", ".loomkit-unpacking-longer0/loomkit-unpacking",
                             ".loomkit-unpacking-mine02/loomkit-unpacking", ".loomkit-unpacking-mine02/mine.txt",
                             ".loomkit-unpacking-mine03/loomkit-unpacking/new/mine.txt"}) {
        writeText(root / kept, "mine");
    }
    const auto before = filesBelow(root.path());
    fs::create_directory(root / ".loomkit-unpacking-empty0");
    writeText(root / ".loomkit-unpacking-left00" + marker, "");
    writeText(root / ".loomkit-unpacking-left01" + marker, "");
    writeText(root / ".loomkit-unpacking-left01/new/lib/x.so", "half a lib");
    writeText(root / ".loomkit-unpacking-left01/old/component.json", "{}");
    place(CraftedComponent(), root / "c");
    fs::remove_all(root / "c");
    EXPECT_EQ(filesBelow(root.path()), before);
    EXPECT_FALSE(fs::exists(root / ".loomkit-unpacking-empty0"));
    EXPECT_FALSE(fs::exists(root / ".loomkit-unpacking-left00"));
}

}  // namespace
