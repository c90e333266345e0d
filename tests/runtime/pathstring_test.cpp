#include "pathkit/dspathstring.h"

#include "basix/basix.h"
#include "vrlbase/runtime.h"
#include "vrlkrt/platformpath.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Path = dsPathString_<dsMBCSSafeString>;

struct PathCase {
    const char* name;
    const char* codePage;
    std::string given;
    std::string normal;
    std::string platform;
};

void PrintTo(const PathCase& path, std::ostream* out) { *out << path.name; }

class NormalPath : public testing::TestWithParam<PathCase> {
protected:
    void SetUp() override { ASSERT_TRUE(utSetCodePage(GetParam().codePage)); }
    void TearDown() override { utSetCodePage(nullptr); }
};

TEST_P(NormalPath, IsReachedAndStays) {
    const Path path(GetParam().given.c_str());
    EXPECT_EQ(path.str(), GetParam().normal);
    EXPECT_EQ(Path(path.c_str()).str(), GetParam().normal);
    EXPECT_EQ(vrlPlatformPath(path), GetParam().platform);
}

// In Shift_JIS, 0x83 0x5C is one character whose second byte is that of a backslash; 0x81 0x40 is the wide blank.
const PathCase pathCases[] = {
    {"Empty", "UTF-8", "", "", ""},
    {"Blanks", "UTF-8", " \t\v\b\n\r\f ", "", ""},
    {"Drive", "UTF-8", "c:/a/b", "c:\\a\\b", "c:/a/b"},
    {"Root", "UTF-8", "/a", "\\a", "/a"},
    {"LeadingPair", "UTF-8", "//a/b", "\\\\a\\b", "//a/b"},
    {"LeadingRun", "UTF-8", "///a", "\\\\a", "//a"},
    {"Server", "UTF-8", "\\\\server\\\\share", "\\\\server\\share", "//server/share"},
    {"Run", "UTF-8", "a\\\\\\b", "a\\b", "a/b"},
    {"MixedRun", "UTF-8", "a/\\/b", "a\\b", "a/b"},
    {"BlanksAround", "UTF-8", "  c:\\a  ", "c:\\a", "c:/a"},
    {"BlankInside", "UTF-8", "\ta b\n", "a b", "a b"},
    {"TrailingSeparator", "UTF-8", "a/b/", "a\\b\\", "a/b/"},
    {"TrailingRun", "UTF-8", "a//", "a\\", "a/"},
    {"BlankBeforePair", "UTF-8", " //a", "\\a", "/a"},
    {"KeepsCase", "UTF-8", "/Aa/B", "\\Aa\\B", "/Aa/B"},
    {"Utf8", "UTF-8", "/\xC3\xA9/\xE2\x82\xAC ", "\\\xC3\xA9\\\xE2\x82\xAC", "/\xC3\xA9/\xE2\x82\xAC"},
    {"TrailByteOfBackslash", "Shift_JIS", "/\x83\x5C/a", "\\\x83\x5C\\a", "/\x83\x5C/a"},
    {"TrailByteThenSeparator", "Shift_JIS", "\x83\x5C\\a", "\x83\x5C\\a", "\x83\x5C/a"},
    {"TrailByteThenRun", "Shift_JIS", "\x83\x5C\\\\a", "\x83\x5C\\a", "\x83\x5C/a"},
    {"LeadTakesTheBlank", "Shift_JIS", "a\x83 ", "a\x83 ", "a\x83 "},
    {"BlankAfterCharacter", "Shift_JIS", "a\x83\x5C  ", "a\x83\x5C", "a\x83\x5C"},
    {"LoneLead", "Shift_JIS", "/a\x83", "\\a\x83", "/a\x83"},
    {"SameBytesInUtf8Rules", "UTF-8", "a\x83\x5C\\b", "a\x83\\b", "a\x83/b"},
    {"Gbk", "GBK", "/\x81\x5C//b", "\\\x81\x5C\\b", "/\x81\x5C/b"},
};
INSTANTIATE_TEST_SUITE_P(Table, NormalPath, testing::ValuesIn(pathCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(PathString, NormalisesEveryLaterChangeToo) {
    Path path("a/b");
    path.assign("x//y ", 5);
    EXPECT_EQ(path.str(), "x\\y");
    path.setByte(0, '/');
    EXPECT_EQ(path.str(), "\\\\y");
    path.erase(1, 1);
    EXPECT_EQ(path.str(), "\\y");
}

TEST(PathString, RefusesPositionsPastTheEnd) {
    Path path("ab");
    EXPECT_THROW(path.setByte(2, 'x'), std::out_of_range);
    EXPECT_THROW(path.erase(3, 1), std::out_of_range);
    EXPECT_EQ(path.str(), "ab");
}

TEST(PathString, ExpandsMacrosOnTheWayToThePlatform) {
    vrlSetPathMacro("ROOT_OF_TEST", "/r");
    EXPECT_EQ(vrlPlatformPath(Path("$(ROOT_OF_TEST)/x/$(UNKNOWN)")), "/r/x/$(UNKNOWN)");
}

TEST(PathString, JoinsSurrogatesOnTheWayToThePlatform) {
    vrlSetPathMacro("HALF", "\xED\xA0\xBD");
    EXPECT_EQ(vrlPlatformPath(Path("/$(HALF)\xED\xB8\x80/\xED\xB8\x80$(HALF)\xED")),
              "/\xF0\x9F\x98\x80/\xED\xB8\x80\xED\xA0\xBD\xED");
}

}  // namespace
