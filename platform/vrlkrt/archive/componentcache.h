#pragma once

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/archive/extractionlocks.h"

#include <chrono>
#include <string>
#include <vector>

namespace vrlkrt {

/// The first of these folders that is there or can be made, or else the last of them. There is one at least. One that
/// others could put code into is refused, not skipped.
[[nodiscard]] std::string chooseCache(const std::vector<std::string>& folders);

/// Brings the component of an archive into its own folder of the component cache, named by the component and the
/// archive's digest. Processes that want the same one wait for whoever fills it, as long as `patience`, and take over
/// when that one dies. A damaged folder is rebuilt. The cache folder is made where it is missing, and refused where
/// others could put code into it. One that can't be written still serves what it holds.
[[nodiscard]] vrlExtractedComponent placeInCache(const ComponentArchive& archive, const std::string& cacheFolder,
                                                 std::chrono::milliseconds patience = lockPatience);

}  // namespace vrlkrt
