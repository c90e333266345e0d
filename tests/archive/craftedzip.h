#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// One entry of a zip file that a test makes, with everything that an attacker could set. The content stands in the
/// file as it is given.
struct CraftedEntry {
    std::string path;
    std::string content;
    std::uint32_t unixMode = 0100644;
    std::uint16_t flags = 0;
    std::optional<std::uint32_t> statedSize{};  ///< unpacked size that both headers state; the true one unless given
    std::optional<std::uint32_t> statedCrc{};
    std::uint16_t method = 0;
    std::string extra{};      ///< extra fields of both headers
    std::string localPath{};  ///< name in the local header; the path where empty
    std::string before{};     ///< bytes that stand in front of the local header
    std::string after{};      ///< bytes that stand behind the content
};

/// A zip file, byte by byte.
std::string craftZip(const std::vector<CraftedEntry>& entries);

/// The content deflated without a header, as an entry of method 8 holds it.
std::string deflated(const std::string& content);

/// The little-endian bytes of a number.
std::string bytesOf(std::uint64_t value, std::size_t count);

/// The zip file with other bytes at `offset` of the last of its records that starts with `signature`.
std::string patched(std::string zip, const std::string& signature, std::size_t offset, const std::string& bytes);

/// The least that passes for a shared object of this platform: headers, and nothing to run.
std::string tinyLibrary();

/// A valid component archive with these files besides component.json, the library "lib/x.so" with its one function
/// among them. `manifest` replaces its component.json where it is not empty.
struct CraftedComponent {
    std::string name = "sample";
    std::string function = "twice";
    std::vector<CraftedEntry> files = {{"lib/x.so", tinyLibrary()}, {"data/table.txt", "1 2 3"}};
    std::string manifest;

    std::string defaultManifest() const;
    std::string zip() const;
};

/// The same component with other files.
CraftedComponent otherVersion();
