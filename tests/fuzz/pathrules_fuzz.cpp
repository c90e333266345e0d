// Paths of archive entries: what the rules let pass stays below the folder that it is extracted to, also by the
// judgement of the standard library and on a platform with other separators.

#include "vrlkrt/archive/archivepath.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::string text(reinterpret_cast<const char*>(bytes), count);
    if (!vrlkrt::entryPathProblem(text).empty()) {
        return 0;
    }
    const std::filesystem::path path(text);
    if (!path.is_relative() || path.lexically_normal() != path || !path.has_filename() ||
        path.begin()->string() == "..") {
        std::abort();
    }
    const std::filesystem::path below = (std::filesystem::path("/root") / path).lexically_normal();
    if (below.string() != "/root/" + text || text.find_first_of("\\:") != std::string::npos) {
        std::abort();
    }
    return 0;
}
