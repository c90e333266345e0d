#pragma once

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/archive/extractionlocks.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace vrlkrt {

/// Unpacks the archive into `folder`, which must not exist; its parent must.
void extractAll(const ComponentArchive& archive, const std::string& folder);

/// The component of an archive that `folder` holds whole.
[[nodiscard]] vrlExtractedComponent describeComponent(const ComponentArchive& archive, const std::string& folder,
                                                      std::shared_ptr<FolderLease> lease);

/// The component, when the folder holds it exactly as the archive does and nobody else can change it there; nothing
/// otherwise. The lease on the folder is taken before: null gives nothing. Files that the archive doesn't have are not
/// compared with anything.
[[nodiscard]] std::optional<vrlExtractedComponent> wholeComponent(const ComponentArchive& archive,
                                                                  const std::string& folder,
                                                                  const std::shared_ptr<FolderLease>& lease);

/// Makes a folder and its parents, where they are missing, with these permissions. Throws vrlBaseException, naming
/// the folder.
void makeFolders(const std::string& folder, unsigned permissions = 0755);

/// Brings the component of an archive into `folder`. A whole one that is there is used as it is. One that an
/// earlier extraction of the same component left, of whatever version, is replaced, as long as nothing but its
/// files is there; a folder with anything else, that an instance still runs from, or that others could put code into,
/// is refused and stays untouched. Other processes are waited for as long as `patience`.
[[nodiscard]] vrlExtractedComponent placeInFolder(const ComponentArchive& archive, const std::string& folder,
                                                  std::chrono::milliseconds patience = lockPatience);

}  // namespace vrlkrt
