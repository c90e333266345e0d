#pragma once

#include <map>
#include <string>

namespace kpa {

/// The bytes of an archive of the folder: its component.json, completed, and all its other files, with a shared
/// object for each platform (platform key to the path of a file anywhere) beside those that component.json names.
/// `skippedFile` is left out where the folder has it: the archive that is about to be written, say; "" skips none.
/// The same content gives the same bytes. Throws std::runtime_error or vrlBaseException that tells what is wrong.
std::string packFolder(const std::string& folder, const std::map<std::string, std::string>& libraries,
                       const std::string& skippedFile);

}  // namespace kpa
