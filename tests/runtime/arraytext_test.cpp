#include "testcomponent.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ArrayText, IsWhatTheArrayLibraryShows) {
    const qxArrayOwner array(row({1, 2.5}));
    char* shown = nullptr;
    ASSERT_EQ(vrlcppArrayToString(array.get(), &shown), 0);
    EXPECT_EQ(shown, qxToText(array.get()));
    vrlcppFreeString(shown);
    vrlcppFreeString(nullptr);
    EXPECT_NE(vrlcppArrayToString(nullptr, &shown), 0);
    EXPECT_NE(vrlcppArrayToString(array.get(), nullptr), 0);
}

// Published values of the hash.
TEST(ByteHash, IsTheWellKnownOne) {
    EXPECT_EQ(vrlHashNBytes(0, 0, nullptr), 0x02CC5D05U);
    EXPECT_EQ(vrlHashNBytes(0, 1, "a"), 0x550D7456U);
    EXPECT_EQ(vrlHashNBytes(0, 3, "abc"), 0x32D153FFU);
    EXPECT_NE(vrlHashNBytes(1, 3, "abc"), vrlHashNBytes(0, 3, "abc"));
}

}  // namespace
