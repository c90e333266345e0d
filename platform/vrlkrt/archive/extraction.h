#pragma once

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/archive/extractionlocks.h"

#include <memory>
#include <string>

namespace vrlkrt {

/// Whether the folder holds exactly what the archive does: component.json byte for byte, and every file with its
/// digest. Files that the archive doesn't have are not looked at.
[[nodiscard]] bool holdsWhole(const std::string& folder, const ComponentArchive& archive);

/// Unpacks the archive into `folder`, which must not exist; its parent must.
void extractAll(const ComponentArchive& archive, const std::string& folder);

/// The component of an archive that `folder` holds.
[[nodiscard]] vrlExtractedComponent describeComponent(const ComponentArchive& archive, const std::string& folder,
                                                      std::shared_ptr<FolderLease> lease);

/// Makes a folder and its parents, where they are missing, with these permissions. Throws vrlBaseException, naming
/// the folder.
void makeFolders(const std::string& folder, unsigned permissions = 0755);

/// Brings the component of an archive into `folder`. A whole one that is there is used as it is. One that an
/// earlier extraction of the same component left, of whatever version, is replaced, as long as nothing but its
/// files is there; a folder with anything else, or that an instance still runs from, is refused and stays untouched.
[[nodiscard]] vrlExtractedComponent placeInFolder(const ComponentArchive& archive, const std::string& folder);

}  // namespace vrlkrt
