#pragma once

#include "vrlkrt/archive/extractedcomponent.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vrlkrt {

/// The entry that describes a component, at the top of its archive and of the folder it is extracted to.
constexpr const char* manifestEntry = "component.json";

/// What component.json says.
struct Manifest {
    std::string name;
    std::string version;
    int abi = 0;
    std::vector<vrlComponentFunction> functions;
    std::map<std::string, std::string> libraries;  ///< platform key ("linux-x86_64") to entry path
    std::map<std::string, std::string> digests;    ///< path of every entry but component.json to its SHA-256
};

/// Key of the platform that this process runs on, such as "linux-x86_64".
[[nodiscard]] std::string hostPlatform();

/// Reads a packed component.json. Throws vrlBaseException: for bad JSON with the line and column, otherwise with
/// the member that is missing, of a wrong type or of a wrong form. Members that are not known are skipped, so that
/// a later packer can add some. The abi, the platforms and the presence of files are for the reader of the archive.
[[nodiscard]] Manifest parseManifest(std::string_view text);

/// Reads component.json as authors write it: name, version and functions, and libraries where they want to;
/// nothing else, so that a misspelt member is found. A function without a symbol has the symbol of its name, one
/// without help an empty help.
[[nodiscard]] Manifest parseAuthorManifest(std::string_view text);

/// The text of a packed component.json: the same manifest gives the same bytes.
[[nodiscard]] std::string manifestText(const Manifest& manifest);

/// What is wrong with a platform key, worded to follow "the platform 'x' "; "" when nothing is.
[[nodiscard]] std::string platformKeyProblem(std::string_view key);

}  // namespace vrlkrt
