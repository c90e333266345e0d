#include "archivetesting.h"
#include "processes.h"

#include "krt/component.h"
#include "qx/arrayowner.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/vrlkrt.h"

#include <boost/make_shared.hpp>

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

using Path = dsPathString_<dsMBCSSafeString>;

boost::shared_ptr<std::istream> streamOver(std::string bytes) {
    return vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size()));
}

boost::shared_ptr<vrlExtractedComponent> extractTo(const std::string& folder, const vrlkrt::KpaExtractor& extractor) {
    return vrlMakeDirectoryExtractedComponentFactory(extractor, Path(folder.c_str()))();
}

boost::shared_ptr<vrlExtractedComponent> extractTo(const std::string& folder,
                                                   const boost::shared_ptr<std::istream>& stream) {
    return extractTo(folder, vrlMakeKpaStreamExtractor(stream));
}

TEST(KpaExtractor, OutlivesTheBytesOfItsArchiveAndReadsFromWhereTheStreamStands) {
    const TestFolder root;
    std::string bytes = CraftedComponent().zip();
    const auto block = vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size()));
    const auto other = boost::make_shared<std::istringstream>(bytes);
    const auto begun = streamOver(bytes);
    bytes.assign(bytes.size(), 'x');
    const vrlkrt::KpaExtractor extractor = vrlMakeKpaStreamExtractor(block);
    EXPECT_EQ(extractTo(root / "one/c", extractor)->libraryFile, root / "one/c/lib/x.so");
    EXPECT_EQ(extractTo(root / "two", extractor)->version, "1.2.3");
    extractTo(root / "three", other);
    EXPECT_EQ(filesBelow(root / "one/c"), filesBelow(root / "two"));
    EXPECT_EQ(filesBelow(root / "one/c"), filesBelow(root / "three"));
    EXPECT_EQ(begun->get(), 'P');
    expectFailure("not a zip file", [&] { extractTo(root / "four", begun); });
}

/// What `version` gives of a component with this library that is extracted to the folder.
double versionIn(const std::string& folder, const char* library) {
    CraftedComponent component;
    component.function = "version";
    component.files = {{"lib/x.so", readText(library)}};
    const auto placed = extractTo(folder, streamOver(component.zip()));
    void* handle = vrlInitializeComponentInstance({}, {}, [placed] { return placed; });
    qxArray* result = nullptr;
    vrlLoomkitFeval(handle, "version", 1, &result, 0, nullptr);
    vrlTerminateInstanceInternal(handle);
    return krtScalar(qxArrayOwner(result).get());
}

TEST(Component, RunsTheVersionThatReplacedAnotherInItsFolder) {
    const TestFolder root;
    for (const double version : {1, 2, 2, 1, 2}) {
        EXPECT_EQ(versionIn(root / "c", version == 1 ? VERSION_1 : VERSION_2), version);
    }
}

TEST(Component, IsRefusedWithALibraryThatIsCutShort) {
    const TestFolder root;
    writeText(root / "half.so", readText(VERSION_1).substr(0, 8000));
    expectFailure("/lib/x.so is cut short", [&] { versionIn(root / "c", (root / "half.so").c_str()); });
    expectFailure("/lib/x.so is no ELF file", [&] { versionIn(root / "c", LINALG_ARCHIVE); });
}

/// Leaves this process room for so many bytes of further data.
void leaveRoomFor(std::size_t bytes) {
    std::ifstream status("/proc/self/statm");
    constexpr int dataField = 6;
    std::size_t pages = 0;
    for (int field = 0; field < dataField; ++field) {
        status >> pages;
    }
    rlimit limit{};
    getrlimit(RLIMIT_DATA, &limit);
    limit.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + bytes;
    setrlimit(RLIMIT_DATA, &limit);
}

TEST(KpaExtractor, SharesTheBlockOfAnArchiveInMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer takes memory of its own, and hangs without it";
#endif
    constexpr std::size_t size = std::size_t{64} << 20;
    CraftedComponent component;
    component.files.push_back({"large.bin", std::string(size, 'x')});
    const std::string bytes = component.zip();
    const TestFolder root;
    const pid_t child = inProcess([&] {
        const auto stream = streamOver(bytes);
        leaveRoomFor(size / 2);
        extractTo(root / "c", stream);
    });
    EXPECT_EQ(exitStatus(child), 0);
    EXPECT_EQ(fs::file_size(root / "c/large.bin"), size);
    const pid_t starved = inProcess([&] {
        const auto stream = boost::make_shared<std::istringstream>(bytes);
        leaveRoomFor(size / 2);
        const std::string failure = failureOf([&] { extractTo(root / "d", stream); });
        if (failure.find("out of memory") == std::string::npos) {
            throw std::runtime_error("not '" + failure + "'");
        }
    });
    EXPECT_EQ(exitStatus(starved), 0);
    EXPECT_EQ(namesIn(root.path()), "c ");
}

TEST(KpaExtractor, FailsWithoutAnArchiveOrABlock) {
    const std::pair<vrlkrt::KpaExtractor, const char*> table[] = {
        {{}, "There is no archive of the component."},
        {vrlMakeAlwaysFailExtractor(nullptr), "There is no archive of the component."},
        {vrlMakeAlwaysFailExtractor("signal"), "There is no archive of the component 'signal'."},
        {vrlMakeKpaStreamExtractor(nullptr), "The stream of the archive is null."},
        {vrlMakeKpaStreamExtractor(vrlGetKpaStreamFromArraySrc(nullptr, 0)), "The archive is empty."},
    };
    for (const auto& row : table) {
        EXPECT_EQ(failureOf([&] { extractTo("/nowhere", row.first); }), row.second);
    }
    char byte = 0;
    expectFailure("-1", [&] { vrlGetKpaStreamFromArraySrc(&byte, -1); });
    expectFailure("4", [&] { vrlGetKpaStreamFromArraySrc(nullptr, 4); });
}

}  // namespace
