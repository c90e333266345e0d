#include "archivetesting.h"

#include "vrlkrt/archive/extraction.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace fs = std::filesystem;

/// Stands before the one of the system: the file whose name ends so is closed with a failure that comes late.
static const char* lateFailure = nullptr;

extern "C" int close(int descriptor) {
    bool fails = false;
    if (lateFailure != nullptr) {
        std::error_code none;
        const std::string path = fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none).string();
        fails = path.find(lateFailure) != std::string::npos;
    }
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

TEST(FolderExtraction, MakesReusesAndReplacesTheFolderButNotUnderAnInstance) {
    const TestFolder root;
    const std::string folder = root / "a/b/c";
    {
        const vrlExtractedComponent running = place(CraftedComponent(), folder + "/");
        EXPECT_EQ(running.folder, folder);
        EXPECT_EQ(running.libraryFile, folder + "/lib/x.so");
        EXPECT_EQ(running.functions.at(0).name, "twice");
        const std::uint64_t inode = inodeOf(running.libraryFile);
        EXPECT_EQ(inodeOf(place(CraftedComponent(), folder).libraryFile), inode);
        expectFailure("an instance runs from", [&] { place(otherVersion(), folder); });
        EXPECT_EQ(filesBelow(folder), expectedFiles(CraftedComponent()));
    }
    writeText(folder + "/lib/x.so", "damaged");
    for (const CraftedComponent& version : {CraftedComponent(), otherVersion()}) {
        place(version, folder);
        EXPECT_EQ(filesBelow(folder), expectedFiles(version));
    }
    EXPECT_EQ(namesIn(root / "a/b"), "c ");
    fs::create_directory(root / "empty");
    fs::create_directory_symlink(root / "empty", root / "link");
    EXPECT_EQ(place(CraftedComponent(), root / "link").folder, root / "empty");
    EXPECT_TRUE(fs::is_symlink(root / "link"));
}

TEST(FolderExtraction, RefusesAndKeepsWhatIsNotOurs) {
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
    const std::pair<std::string, const char*> cases[] = {
        {"stranger", "the folder holds another component, 'stranger'"},
        {"extended", "the folder has 'notes', which is not the component's"},
        {"linked", "the folder has 'elsewhere', which is not the component's"},
        {"foreign", "the folder is not empty, and holds no component"},
        {"npm", "its component.json is not that of an extracted component"},
        {"file", "it is there and is not a folder"},
        {"file/below", "Not a directory"},
    };
    for (const auto& [path, message] : cases) {
        const auto before = filesBelow(root.path());
        const std::string failure = failureOf([&, &folder = path] { place(otherVersion(), root / folder); });
        EXPECT_NE(failure.find(message), std::string::npos) << failure;
        EXPECT_NE(failure.find(root / path.substr(0, 4)), std::string::npos) << failure;
        EXPECT_EQ(filesBelow(root.path()), before) << path;
    }
    expectFailure("No folder", [&] { place(CraftedComponent(), ""); });
}

TEST(FolderExtraction, LeavesNothingBehindWhenItFails) {
    const TestFolder root;
    CraftedComponent component;
    component.manifest = component.defaultManifest();
    component.files.back().content = "not what was packed";
    expectFailure("data/table.txt", [&] { place(component, root / "c"); });
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
