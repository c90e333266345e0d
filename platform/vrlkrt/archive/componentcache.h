#pragma once

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/extractedcomponent.h"

#include <string>

namespace vrlkrt {

/// Brings the component of an archive into its own folder of the component cache, named by the component and the
/// archive's digest. Processes that want the same one wait for whoever fills it, and take over when that one dies.
/// A damaged folder is rebuilt. The cache folder is made where it is missing.
[[nodiscard]] vrlExtractedComponent placeInCache(const ComponentArchive& archive, const std::string& cacheFolder);

}  // namespace vrlkrt
