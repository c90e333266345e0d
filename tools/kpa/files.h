#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace kpa {

/// A file that can't be read or written: `what` with the path, made printable, between its two halves.
class FileFailure : public std::runtime_error {
public:
    FileFailure(const std::string& before, const std::string& path, const std::string& after);
};

/// The content of a file of at most `limit` bytes, which are what is read at most. Devices, pipes and folders are no
/// files. Throws FileFailure.
std::string readFile(const std::string& path, std::uint64_t limit);

/// The content of an archive file, as large as archives may be.
std::string readArchiveFile(const std::string& path);

/// Writes a file so that either all of it is there or nothing: beside its place under a fresh name, then moved.
/// Throws FileFailure.
void writeFile(const std::string& path, const std::string& bytes);

}  // namespace kpa
