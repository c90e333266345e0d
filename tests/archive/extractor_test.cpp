#include "archivetesting.h"
#include "craftedzip.h"

#include "krt/component.h"
#include "qx/arrayowner.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/vrlkrt.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace {

using Path = dsPathString_<dsMBCSSafeString>;

boost::shared_ptr<std::istream> streamOver(std::string bytes) {
    return vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size()));
}

TEST(KpaExtractor, OutlivesTheBytesOfItsArchive) {
    const TestFolder root;
    std::string bytes = CraftedComponent().zip();
    const auto stream = vrlGetKpaStreamFromArraySrc(bytes.data(), static_cast<int>(bytes.size()));
    bytes.assign(bytes.size(), 'x');
    const vrlkrt::KpaExtractor extractor = vrlMakeKpaStreamExtractor(stream);
    const auto one = vrlMakeDirectoryExtractedComponentFactory(extractor, Path((root / "one/c").c_str()));
    const auto two = vrlMakeDirectoryExtractedComponentFactory(extractor, Path((root / "two").c_str()));
    EXPECT_EQ(one()->libraryFile, root / "one/c/lib/x.so");
    EXPECT_EQ(two()->version, "1.2.3");
    EXPECT_EQ(filesBelow(root / "one/c"), filesBelow(root / "two"));
}

/// What `version` gives of a component with this library that is extracted to the folder.
double versionIn(const std::string& folder, const char* library) {
    CraftedComponent component;
    component.function = "version";
    component.files = {{"lib/x.so", readText(library)}};
    void* handle = vrlInitializeComponentInstance(
        {}, {},
        vrlMakeDirectoryExtractedComponentFactory(vrlMakeKpaStreamExtractor(streamOver(component.zip())),
                                                  Path(folder.c_str())));
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
    EXPECT_NE(failureOf([&] { versionIn(root / "c", (root / "half.so").c_str()); }).find("/lib/x.so is cut short"),
              std::string::npos);
    EXPECT_NE(failureOf([&] { versionIn(root / "c", LINALG_ARCHIVE); }).find("/lib/x.so is no ELF file"),
              std::string::npos);
}

TEST(KpaExtractor, FailsWithoutAnArchive) {
    const auto failure = [](const vrlkrt::KpaExtractor& extractor) {
        return failureOf([&] { vrlMakeDirectoryExtractedComponentFactory(extractor, Path("/nowhere"))(); });
    };
    EXPECT_EQ(failure(vrlkrt::KpaExtractor()), "There is no archive of the component.");
    EXPECT_EQ(failure(vrlMakeAlwaysFailExtractor(nullptr)), "There is no archive of the component.");
    EXPECT_EQ(failure(vrlMakeAlwaysFailExtractor("signal")), "There is no archive of the component 'signal'.");
    EXPECT_EQ(failure(vrlMakeKpaStreamExtractor(nullptr)), "The stream of the archive is null.");
    EXPECT_EQ(failure(vrlMakeKpaStreamExtractor(streamOver(""))), "The archive is empty.");
}

TEST(KpaExtractor, RefusesABlockOfNegativeLength) {
    char byte = 0;
    EXPECT_NE(failureOf([&] { vrlGetKpaStreamFromArraySrc(&byte, -1); }).find("-1"), std::string::npos);
    EXPECT_NE(failureOf([&] { vrlGetKpaStreamFromArraySrc(nullptr, 4); }).find('4'), std::string::npos);
    EXPECT_EQ(vrlGetKpaStreamFromArraySrc(nullptr, 0)->get(), std::istream::traits_type::eof());
}

}  // namespace
