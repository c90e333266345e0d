#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vrlkrt {

/// One file of a zip archive, as its directory and its local header both state it.
struct ZipEntry {
    std::string path;
    std::string_view packed;  ///< its bytes as they stand in the archive, which outlives the entry
    std::uint64_t size = 0;   ///< in bytes, unpacked
    std::uint32_t crc = 0;    ///< CRC-32 of the unpacked bytes
    bool deflated = false;    ///< stored as it is otherwise
};

/// The files of a zip archive in their order. An archive is refused where two readers could take it for two different
/// ones: every byte belongs to one entry, the directory or the end record, the local headers say what the directory
/// says, and nothing is used that a plain zip of files does not need (other methods than stored and deflated, zip64,
/// encryption, comments, several volumes, links, folders, devices, extra fields that change a name).
/// Paths may be anything, and an entry may stand there twice; contents are not looked at.
/// Throws vrlBaseException that names the entry and what is wrong with it.
[[nodiscard]] std::vector<ZipEntry> readZipDirectory(std::string_view archive, std::uint64_t maxEntries);

}  // namespace vrlkrt
