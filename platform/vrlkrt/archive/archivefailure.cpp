#include "vrlkrt/archive/archivefailure.h"

#include "vrlkrt/archive/printable.h"

#include "vrlbase/exceptions.h"

namespace vrlkrt {

void failArchive(const std::string& sentence) {
    throw Norvane::vrl::vrlBaseException(printable(sentence, 2 * longestQuote));
}

void failEntry(const std::string& path, const std::string& problem) {
    failArchive("Archive entry '" + printable(path, longestQuote) + "': " + problem + ".");
}

void failManifest(const std::string& problem) {
    throw Norvane::vrl::vrlBaseException("component.json: " + printable(problem, longestQuote) + ".");
}

}  // namespace vrlkrt
