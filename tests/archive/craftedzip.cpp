#include "craftedzip.h"

#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/manifest.h"

#include "krt/component.h"

namespace {

std::uint32_t crc32(const std::string& bytes) {
    std::uint32_t crc = ~0U;
    for (const unsigned char byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

void put16(std::string& out, std::size_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>(value >> 8 & 0xFF);
}

void put32(std::string& out, std::size_t value) {
    put16(out, value & 0xFFFF);
    put16(out, value >> 16 & 0xFFFF);
}

/// What the local header and the one of the central directory have in common, after their version fields.
void putCommon(std::string& out, const CraftedEntry& entry) {
    constexpr std::size_t midnightOfFirstJanuary1980 = 0x00210000;
    put16(out, entry.flags);
    put16(out, 0);  // stored
    put32(out, midnightOfFirstJanuary1980);
    put32(out, entry.statedCrc.value_or(crc32(entry.content)));
    put32(out, entry.content.size());
    put32(out, entry.statedSize.value_or(static_cast<std::uint32_t>(entry.content.size())));
    put16(out, entry.path.size());
    put16(out, 0);
}

}  // namespace

std::string craftZip(const std::vector<CraftedEntry>& entries) {
    constexpr std::size_t version = 20;
    constexpr std::size_t madeByUnix = 3 << 8 | version;
    std::string zip;
    std::string directory;
    for (const CraftedEntry& entry : entries) {
        const std::size_t offset = zip.size();
        zip += "PK\3\4";
        put16(zip, version);
        putCommon(zip, entry);
        zip += entry.path + entry.content;

        directory += "PK\1\2";
        put16(directory, madeByUnix);
        put16(directory, version);
        putCommon(directory, entry);
        put16(directory, 0);
        put16(directory, 0);
        put16(directory, 0);
        put32(directory, static_cast<std::size_t>(entry.unixMode) << 16);
        put32(directory, offset);
        directory += entry.path;
    }
    std::string end = "PK\5\6";
    put32(end, 0);
    put16(end, entries.size());
    put16(end, entries.size());
    put32(end, directory.size());
    put32(end, zip.size());
    put16(end, 0);
    return zip + directory + end;
}

std::string CraftedComponent::defaultManifest() const {
    vrlkrt::Manifest made;
    made.name = name;
    made.version = "1.2.3";
    made.abi = KRT_ABI;
    made.functions.push_back({function, function, "does something", {}, {}, {}});
    made.libraries[vrlkrt::hostPlatform()] = "lib/x.so";
    for (const CraftedEntry& file : files) {
        made.digests[file.path] = vrlkrt::sha256Hex(file.content);
    }
    return vrlkrt::manifestText(made);
}

std::string CraftedComponent::zip() const {
    std::vector<CraftedEntry> entries{{vrlkrt::manifestEntry, manifest.empty() ? defaultManifest() : manifest}};
    entries.insert(entries.end(), files.begin(), files.end());
    return craftZip(entries);
}
