#include "basix/basix.h"
#include "pathkit/pathkit.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <tuple>

namespace {

class CodePage : public testing::Test {
protected:
    void TearDown() override { utSetCodePage(nullptr); }

    static std::optional<std::u16string> decode(const char* text, int length = -1) {
        const std::unique_ptr<utf16_t, decltype(&utFree)> units(lcp_to_utf16(text, length), utFree);
        return units == nullptr ? std::nullopt : std::optional<std::u16string>(units.get());
    }
};

TEST_F(CodePage, ConvertsByTheChosenOne) {
    const std::tuple<const char*, const char*, int, std::optional<std::u16string>> conversions[] = {
        {"UTF-8", "", -1, u""},
        {"UTF-8", "a\xC3\xA9", -1, u"a\u00E9"},
        {"UTF-8", "\xF0\x9F\x98\x80", -1, u"\U0001F600"},
        {"UTF-8", "abc", 2, u"ab"},
        {"UTF-8", "abc", 0, u""},
        {"UTF-8", "\xC3", -1, std::nullopt},
        {"UTF-8", "a\xFFz", -1, std::nullopt},
        {"UTF-8", "abc", -2, std::nullopt},
        {"UTF-8", nullptr, -1, std::nullopt},
        {"Shift_JIS", "\x83\x5C", -1, u"\u30BD"},
        {"Shift_JIS", "\x83", -1, std::nullopt},
        {"GBK", "\xC4\xE3", -1, u"\u4F60"},
        {"ISO-8859-1", "\xE9", -1, u"\u00E9"},
    };
    for (const auto& [codePage, text, length, units] : conversions) {
        ASSERT_TRUE(utSetCodePage(codePage));
        EXPECT_EQ(decode(text, length), units) << codePage << " " << (text == nullptr ? "null" : text);
    }
}

TEST_F(CodePage, HasLeadBytesOnlyWhereCharactersTakeTwo) {
    const std::tuple<const char*, unsigned char, bool> leads[] = {
        {"UTF-8", 0xC3, false},      {"UTF-8", 0xF0, false},     {"ISO-8859-1", 0xE9, false}, {"Shift_JIS", 0x83, true},
        {"Shift_JIS", 0x5C, false},  {"Shift_JIS", 0xB1, false}, {"Shift_JIS", 0xFC, true},   {"GBK", 0x81, true},
        {"GBK", 0x7F, false},        {"EUC-JP", 0x8E, true},     {"Big5", 0xA4, true},        {"UTF-16", 0x81, false},
        {"ISO-2022-JP", 0x81, false}};
    for (const auto& [codePage, byte, isLead] : leads) {
        ASSERT_TRUE(utSetCodePage(codePage));
        EXPECT_EQ(dsIsMultiByteLead(byte), isLead) << codePage << " " << int{byte};
    }
}

TEST_F(CodePage, IsTheSameForEveryThreadAndStaysWhereANameIsUnknown) {
    utIsMultiByteLead(0x83);
    ASSERT_TRUE(utSetCodePage("Shift_JIS"));
    EXPECT_FALSE(utSetCodePage("no such code page"));
    EXPECT_FALSE(utSetCodePage(""));
    EXPECT_FALSE(utSetCodePage("UTF-8//TRANSLIT"));
    bool elsewhere = false;
    std::thread([&] { elsewhere = utIsMultiByteLead(0x83); }).join();
    EXPECT_TRUE(elsewhere);
    EXPECT_TRUE(utIsMultiByteLead(0x83));
}

TEST_F(CodePage, WritesLocalTextFromAnyUtf8) {
    const std::tuple<const char*, const char*, const char*> texts[] = {
        {"UTF-8", "a\xC3\xA9", "a\xC3\xA9"},
        {"UTF-8", "\xED\xA0\xBD\xED\xB8\x80", "\xF0\x9F\x98\x80"},
        {"UTF-8", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {"UTF-8", "x\xFFy\xC3", "x\xEF\xBF\xBDy\xEF\xBF\xBD"},
        {"UTF-8", "\xC0\x80z", ""},
        {"Shift_JIS", "\xE3\x82\xBD", "\x83\x5C"},
        {"ISO-8859-1", "\xC3\xA9\xE3\x82\xBD", "\xE9\x1A"}};
    for (const auto& [codePage, utf8, local] : texts) {
        ASSERT_TRUE(utSetCodePage(codePage));
        EXPECT_STREQ(utLocalText(utf8).c_str(), local) << codePage << " " << utf8;
    }
}

}  // namespace
