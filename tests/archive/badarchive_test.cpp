#include "archivetesting.h"
#include "craftedzip.h"

#include "vrlkrt/archive/digest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>
#include <utility>

namespace {

/// The failure of reading an archive as an extraction does, to the last byte.
std::string readingFailure(const std::string& bytes, const vrlkrt::ArchiveLimits& limits = {}) {
    return failureOf([&] {
        const vrlkrt::ComponentArchive archive = archiveOf(bytes, limits);
        archive.requireAbi();
        EXPECT_FALSE(archive.hostLibrary().empty());
        archive.verify();
    });
}

std::string withFile(const CraftedEntry& entry) {
    CraftedComponent component;
    component.files.push_back(entry);
    return component.zip();
}

std::string withMember(const std::string& pointer, const nlohmann::json& value) {
    CraftedComponent component;
    nlohmann::json manifest = nlohmann::json::parse(component.defaultManifest());
    manifest[nlohmann::json::json_pointer(pointer)] = value;
    component.manifest = manifest.dump();
    return component.zip();
}

std::string withManifest(const std::string& manifest) {
    CraftedComponent component;
    component.manifest = manifest;
    return component.zip();
}

/// An extra file that the manifest does not list.
std::string withUnlisted() {
    CraftedComponent component;
    component.manifest = component.defaultManifest();
    component.files.push_back({"extra.txt", "?"});
    return component.zip();
}

TEST(ComponentArchive, IsRefusedByTheNameOfItsBadEntry) {
    const std::string good = CraftedComponent().zip();
    const std::string manifest = CraftedComponent().defaultManifest();
    const std::string digits = "0123456789";
    const std::pair<std::string, const char*> table[] = {
        {"", "The archive is empty."},
        {"hello, I am a text", "The archive is not a zip file."},
        {good.substr(0, good.size() - 30), "The archive is truncated"},
        {std::string(good).erase(10, 60), "The archive is truncated or damaged: "},
        {craftZip({{"lib/x.so", "library"}}), "The archive has no component.json."},
        {craftZip({{"sample/component.json", manifest}}), "The archive has no component.json."},
        {withManifest("{\"name\": }"), "component.json: parse error at line 1, column 10"},
        {withFile({"component.json", "{}"}), "Archive entry 'component.json': it is there twice"},
        {withFile({"lib/x.so", "library"}), "Archive entry 'lib/x.so': it is there twice."},
        {withUnlisted(), "Archive entry 'extra.txt': component.json has no SHA-256 of it."},
        {withMember("/sha256/gone.txt", std::string(64, '0')),
         "Archive entry 'gone.txt': component.json lists it, but it is not in the archive."},
        {withMember("/libraries/darwin-arm64", "lib/y.so"),
         "Archive entry 'lib/y.so': component.json names it as the library for darwin-arm64, but"},
        {withMember("/sha256/lib~1x.so", vrlkrt::sha256Hex("another library")),
         "Archive entry 'lib/x.so': its content does not match its SHA-256"},
        {withMember("/libraries", {{"plan9-mips", "lib/x.so"}}), "the component 'sample' has no library for linux-"},
        {withMember("/libraries", nlohmann::json::object()), "it has none at all"},
        {withMember("/abi", 999), "the component 'sample' was built for abi 999"},
        {withFile({"/tmp/evil", "x"}), "Archive entry '/tmp/evil': its path is absolute."},
        {withFile({"lib/../../evil", "x"}), "Archive entry 'lib/../../evil': its path has the component '..'."},
        {withFile({"a/..\\evil", "x"}), "its path has a backslash"},
        {withFile({"a//b", "x"}), "'a//b': its path has an empty component"},
        {withFile({"a/./b", "x"}), "'a/./b': its path has the component '.'"},
        {withFile({"caf\xC3\xA9", "x"}), "?': its path has a character that is not printable ASCII"},
        {withFile({"caf\xC3\xA9", "x", 0100644, 0x800}), "'number 4': its header is damaged: Pathname"},
        {withFile({"folder/", ""}), "'folder/': it is a folder"},
        {withFile({"link", "/etc/passwd", 0120777}), "'link': it is a link"},
        {withFile({"tty", "", 0020666}), "'tty': it is a device, pipe or socket"},
        {withFile({"socket", "", 0140666}), "'socket': it is a device, pipe or socket"},
        {withFile({"secret", digits, 0100644, 1}), "'secret': it is encrypted"},
        {withFile({"lib/x.so/inner", "x"}), "its folder 'lib/x.so' is a file"},
        {withFile({"component.json/a", "x"}), "its folder 'component.json' is a file"},
        {withFile({"liar", digits, 0100644, 0, 4}), "Archive entry 'liar': "},
        {withFile({"liar", digits, 0100644, 0, 4000}), "Archive entry 'liar': "},
        {withFile({"liar", digits, 0100644, 0, {}, 1}), "Archive entry 'liar': its content is damaged"},
        {withFile({"bomb", digits, 0100644, 0, 0xF0000000}),
         "Archive entry 'bomb': it has 4026531840 bytes, and 536870912 are allowed."},
    };
    for (const auto& [bytes, message] : table) {
        const std::string failure = readingFailure(bytes);
        EXPECT_NE(failure.find(message), std::string::npos) << "'" << failure << "', not '" << message << "'";
    }
}

TEST(ComponentArchive, ReadsAGoodOne) {
    const CraftedComponent component;
    EXPECT_EQ(readingFailure(component.zip()), "");
    const vrlkrt::ComponentArchive archive = archiveOf(component.zip());
    EXPECT_EQ(archive.manifest().name, "sample");
    EXPECT_EQ(archive.digest(), vrlkrt::sha256Hex(component.zip()));
    EXPECT_EQ(archive.files(), (std::map<std::string, std::uint64_t>{{"lib/x.so", 7}, {"data/table.txt", 5}}));
}

TEST(ComponentArchive, HasLimits) {
    const std::string zip = CraftedComponent().zip();
    const std::uint64_t manifestSize = CraftedComponent().defaultManifest().size();
    const auto limited = [&](std::uint64_t vrlkrt::ArchiveLimits::*limit, std::uint64_t value) {
        vrlkrt::ArchiveLimits limits;
        limits.*limit = value;
        return readingFailure(zip, limits);
    };
    using Limits = vrlkrt::ArchiveLimits;
    EXPECT_EQ(limited(&Limits::archiveBytes, zip.size()), "");
    EXPECT_NE(limited(&Limits::archiveBytes, zip.size() - 1).find("bytes, and"), std::string::npos);
    EXPECT_EQ(limited(&Limits::entries, 3), "");
    EXPECT_EQ(limited(&Limits::entries, 2), "The archive has more than the 2 entries that are allowed.");
    EXPECT_EQ(limited(&Limits::manifestBytes, manifestSize), "");
    EXPECT_NE(limited(&Limits::manifestBytes, manifestSize - 1).find("'component.json'"), std::string::npos);
    EXPECT_EQ(limited(&Limits::fileBytes, 7), "");
    EXPECT_EQ(limited(&Limits::fileBytes, 6), "Archive entry 'lib/x.so': it has 7 bytes, and 6 are allowed.");
    EXPECT_EQ(limited(&Limits::totalBytes, manifestSize + 12), "");
    EXPECT_NE(limited(&Limits::totalBytes, manifestSize + 11).find("'data/table.txt': with it"), std::string::npos);
}

TEST(ComponentArchive, DamagedAtRandomIsRefusedOrReadsTheSame) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string whole = CraftedComponent().zip();
    constexpr int rounds = 3000;
    int refused = 0;
    for (int round = 0; round < rounds; ++round) {
        std::string bytes = whole;
        const int changes = 1 + static_cast<int>(random() % 3);
        for (int change = 0; change < changes; ++change) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        if (random() % 8 == 0) {
            bytes.resize(random() % bytes.size());
        }
        // What is read in spite of the damage (in a time stamp, say) is what was packed.
        const std::string failure = failureOf([&] {
            const vrlkrt::ComponentArchive archive = archiveOf(bytes);
            archive.verify();
            for (const auto& file : archive.files()) {
                EXPECT_EQ(archive.manifest().digests.count(file.first), 1U) << file.first;
            }
            EXPECT_EQ(archive.files().size(), 2U);
        });
        refused += failure.empty() ? 0 : 1;
    }
    EXPECT_GT(refused, rounds / 4);
}

}  // namespace
