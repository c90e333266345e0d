#include "pathkit/dspathstring.h"

#include "basix/basix.h"
#include "vrlbase/runtime.h"
#include "vrlkrt/archive/platformpath.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using Path = dsPathString_<dsMBCSSafeString>;

// In Shift_JIS, 0x83 0x5C is one character whose second byte is that of a backslash; 0x81 0x40 is the wide blank.
const std::tuple<const char*, const char*, const char*, const char*> pathCases[] = {
    {"UTF-8", "", "", ""},
    {"UTF-8", " \t\v\b\n\r\f ", "", ""},
    {"UTF-8", "/a", "\\a", "/a"},
    {"UTF-8", "//a/b", "\\\\a\\b", "//a/b"},
    {"UTF-8", "///a", "\\\\a", "//a"},
    {"UTF-8", "\\\\server\\\\share", "\\\\server\\share", "//server/share"},
    {"UTF-8", "a/\\/b", "a\\b", "a/b"},
    {"UTF-8", "  c:\\a  ", "c:\\a", "c:/a"},
    {"UTF-8", "a//", "a\\", "a/"},
    {"UTF-8", " //a", "\\a", "/a"},
    {"UTF-8", "/\xC3\xA9/\xE2\x82\xAC ", "\\\xC3\xA9\\\xE2\x82\xAC", "/\xC3\xA9/\xE2\x82\xAC"},
    {"Shift_JIS", "/\x83\x5C/a", "\\\x83\x5C\\a", "/\x83\x5C/a"},
    {"Shift_JIS", "\x83\x5C\\a", "\x83\x5C\\a", "\x83\x5C/a"},
    {"Shift_JIS", "\x83\x5C\\\\a", "\x83\x5C\\a", "\x83\x5C/a"},
    {"Shift_JIS", "a\x83 ", "a\x83 ", "a\x83 "},
    {"Shift_JIS", "a\x83\x5C  ", "a\x83\x5C", "a\x83\x5C"},
    {"Shift_JIS", "/a\x83", "\\a\x83", "/a\x83"},
    {"UTF-8", "a\x83\x5C\\b", "a\x83\\b", "a\x83/b"},
    {"GBK", "/\x81\x5C//b", "\\\x81\x5C\\b", "/\x81\x5C/b"},
};

TEST(PathString, ReachesItsNormalFormAndStaysThere) {
    for (const auto& [codePage, given, normal, platform] : pathCases) {
        SCOPED_TRACE(std::string(codePage) + ": " + given);
        ASSERT_TRUE(utSetCodePage(codePage));
        const Path path(given);
        EXPECT_EQ(path.str(), normal);
        EXPECT_EQ(Path(path.c_str()).str(), normal);
        EXPECT_EQ(vrlPlatformPath(path), platform);
    }
    utSetCodePage(nullptr);
}

TEST(PathString, NormalisesEveryLaterChangeToo) {
    Path path("a/b");
    path.assign("x//y ", 5);
    EXPECT_EQ(path.str(), "x\\y");
    path.setByte(0, '/');
    EXPECT_EQ(path.str(), "\\\\y");
    path.erase(1, 1);
    EXPECT_EQ(path.str(), "\\y");
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
