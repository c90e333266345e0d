#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// One entry of a zip file that a test makes, with everything that an attacker could set. Contents are stored.
struct CraftedEntry {
    std::string path;
    std::string content;
    std::uint32_t unixMode = 0100644;
    std::uint16_t flags = 0;
    std::optional<std::uint32_t> statedSize{};  ///< unpacked size that both headers state; the true one unless given
    std::optional<std::uint32_t> statedCrc{};
};

/// A zip file, byte by byte.
std::string craftZip(const std::vector<CraftedEntry>& entries);

/// A valid component archive with these files besides component.json, the library "lib/x.so" with its one function
/// among them. `manifest` replaces its component.json where it is not empty.
struct CraftedComponent {
    std::string name = "sample";
    std::string function = "twice";
    std::vector<CraftedEntry> files = {{"lib/x.so", "library"}, {"data/table.txt", "1 2 3"}};
    std::string manifest;

    std::string defaultManifest() const;
    std::string zip() const;
};
