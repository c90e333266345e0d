#include "archivetesting.h"

#include "support/heapblocks.h"
#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/manifest.h"
#include "vrlkrt/archive/printable.h"

#include <new>

namespace {

TEST(Manifest, ReadsWhatItWrites) {
    vrlkrt::Manifest manifest;
    manifest.name = "signal-2.x";
    manifest.version = "2.0.1-rc1+7";
    manifest.abi = 1;
    manifest.functions.push_back({"filter", "filter_entry", "filters \"x\"", 1, 3, 2});
    manifest.functions.push_back({"window", "window", "", {}, {}, {}});
    manifest.libraries["linux-x86_64"] = "lib/a.so";
    manifest.digests["lib/a.so"] = std::string(64, 'a');
    const std::string text = vrlkrt::manifestText(manifest);
    const vrlkrt::Manifest read = vrlkrt::parseManifest(text);
    EXPECT_EQ(vrlkrt::manifestText(read), text);
    EXPECT_EQ(read.functions.at(0).help, "filters \"x\"");
    EXPECT_EQ(read.functions.at(0).maximumInputs, 3);
    EXPECT_FALSE(read.functions.at(1).minimumInputs.has_value());
}

TEST(Manifest, OfAnAuthorIsCompletedAndHasOnlyKnownMembers) {
    const vrlkrt::Manifest read = vrlkrt::parseAuthorManifest(
        R"({"name": "a", "version": "1", "functions": [{"name": "f"}, {"name": "g", "symbol": "_g", "help": "h"}]})");
    EXPECT_EQ(read.functions.at(0).symbol, "f");
    EXPECT_EQ(read.functions.at(0).help, "");
    EXPECT_EQ(read.functions.at(1).symbol, "_g");
    const std::pair<const char*, const char*> table[] = {
        {R"({"name": "a", "version": "1", "functions": [], "licence": "none"})",
         "component.json: the member 'licence' is not known."},
        {R"({"name": "a", "version": "1", "functions": [{"name": "f", "simbol": "g"}]})",
         "component.json: the member 'simbol' of functions[0] is not known."},
    };
    for (const auto& [text, failure] : table) {
        EXPECT_EQ(failureOf([author = text] { static_cast<void>(vrlkrt::parseAuthorManifest(author)); }), failure);
    }
}

std::string parseFailure(const std::string& text) {
    return failureOf([&] { EXPECT_EQ(vrlkrt::parseManifest(text).name, "sample"); });
}

/// Bad members, and most of the texts, are shown to both readers of archives in the tests of the one in Java.
TEST(Manifest, IsRefusedAsATextThatReadersCouldTakeDifferently) {
    const std::string good = CraftedComponent().defaultManifest();
    const std::string rest = good.substr(1);
    const std::pair<std::string, const char*> table[] = {
        {"[1]", "component.json: the top must be an object, not array."},
        {R"({"sha256": {},)" + rest, "component.json: the member 'sha256' is there twice."},
        {R"({"x": {"a": 1, "b": {"a": 2}}, "y": {"a": 1},)" + rest, ""},
    };
    for (const auto& [text, failure] : table) {
        EXPECT_EQ(parseFailure(text), failure);
    }
    const std::string where = parseFailure("{\n  \"name\": \"x\",\n  \"version\": oops\n}");
    EXPECT_NE(where.find("component.json: parse error at line 3, column 14"), std::string::npos) << where;
}

TEST(Manifest, MayNestAsDeepAsItLikes) {
    constexpr std::size_t depth = 400000;
    const std::string deep = std::string(depth, '[') + std::string(depth, ']');
    for (const char* before : {R"({"x": )", R"({"name": "x", "version": "1", "abi": )"}) {
        EXPECT_NE(parseFailure(before + deep + "}"), "");
    }
}

TEST(Manifest, IsReadAndWrittenWholeOrNotAtAllWithoutMemory) {
    const std::string good = vrlkrt::manifestText(vrlkrt::parseManifest(CraftedComponent().defaultManifest()));
    const std::string deep = "{\"x\": [[{\"y\": {\"a longer name than fits a string\": [1]}}], 2]," + good.substr(1);
    const std::string wrong = "{\"name\": {}," + good.substr(1);
    const auto refusal = loomkit::test::Refusal::once;
    for (const auto& [text, result] : {std::pair(good, good), std::pair(deep, good), std::pair(wrong, std::string())}) {
        std::string written;
        const auto rewrite = [&written, text = text] {
            try {
                written = vrlkrt::manifestText(vrlkrt::parseManifest(text));
            } catch (const Norvane::vrl::vrlBaseException&) {
                written = "";
            } catch (const std::bad_alloc&) {
                written = "no memory";
            }
        };
        const auto check = [&, result = result, text = text](std::size_t refused) {
            EXPECT_TRUE(written == result || (refused != 0 && written == "no memory"))
                << written << "\nblock " << refused << " of " << text;
        };
        EXPECT_GT(loomkit::test::refuseEachBlock(refusal, rewrite, check), 10U);
    }
}

TEST(PrintableText, EscapesWhatATerminalObeys) {
    const std::pair<std::string, const char*> table[] = {
        {"gr\xC3\xBC\xC3\x9F, \xF0\x9F\x98\x80 'a\\b'", "gr\xC3\xBC\xC3\x9F, \xF0\x9F\x98\x80 'a\\b'"},
        {std::string("\0\x1B]0;t\a\x7F\n\t", 10), "\\x00\\x1b]0;t\\x07\\x7f\\x0a\\x09"},
        {"\xC2\x9B\xC2\x85\xC2\xA0", "\\u009b\\u0085\xC2\xA0"},
        {"a\xE2\x80\xAE b\xE2\x81\xA6\xE2\x80\xA8\xD8\x9C\xEF\xBB\xBF", "a\\u202e b\\u2066\\u2028\\u061c\\ufeff"},
        {"\xF3\xA0\x81\x81", "\\U000e0041"},
        {"\xC0\xAF|\x9B|\xC3|\xED\xA0\x80", "\\xc0\\xaf|\\x9b|\\xc3|\\xed\\xa0\\x80"},
        {"\xE2\x80", "\\xe2\\x80"},
        {"\xF4\x90\x80\x80\xFF", "\\xf4\\x90\\x80\\x80\\xff"},
    };
    for (const auto& [text, shown] : table) {
        EXPECT_EQ(vrlkrt::printable(text), shown);
        EXPECT_EQ(vrlkrt::printable(shown), shown);
    }
    EXPECT_EQ(vrlkrt::printable("abc", 3), "abc");
    EXPECT_EQ(vrlkrt::printable("a\xC3\xBC", 2), "a...");
    EXPECT_EQ(vrlkrt::printableLines("a\n\tb\r"), "a\n\tb\\x0d");
}

TEST(EntryPath, IsJudgedByTable) {
    const std::pair<std::string, std::string> table[] = {
        {"a", ""},
        {"lib/linux-x86_64/a b.so", ""},
        {"a..b/...", ""},
        {std::string(255, 'a'), ""},
        {"", "its path is empty"},
        {"/", "its path is absolute"},
        {"/etc/passwd", "its path is absolute"},
        {"..", "its path has the component '..'"},
        {"a/../b", "its path has the component '..'"},
        {"a/..", "its path has the component '..'"},
        {"./a", "its path has the component '.'"},
        {"a//b", "its path has an empty component"},
        {"a/", "its path has an empty component"},
        {"a\\b", "its path has a backslash"},
        {"C:/a", "its path has a colon"},
        {"a\nb", "its path has a character that is not printable ASCII"},
        {std::string("a\0b", 3), "its path has a character that is not printable ASCII"},
        {"caf\xC3\xA9", "its path has a character that is not printable ASCII"},
        {std::string(256, 'a'), "its path has a component of more than 255 characters"},
        {std::string(1025, '/'), "its path has more than 1024 characters"},
    };
    for (const auto& [path, problem] : table) {
        EXPECT_EQ(vrlkrt::entryPathProblem(path), problem) << path;
    }
}

}  // namespace
