#include "vrlkrt/archive/platformpath.h"

#include "vrlbase/runtime.h"

std::string vrlPlatformPath(const dsPathString_<dsMBCSSafeString>& path) {
    std::string text = path.str();
    const auto isSeparator = [](std::size_t, dsTextUnit unit) { return dsIsSeparatorUnit(unit); };
    std::size_t position = dsFindUnit(text, 0, isSeparator);
    while (position != std::string::npos) {
        text[position] = '/';
        position = dsFindUnit(text, position + 1, isSeparator);
    }
    return vrlFileSystemPath(vrlExpandPathMacros(text));
}
