#include "vrlkrt/archive/manifest.h"

#include "vrlkrt/archive/archivefailure.h"
#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/jsonvalue.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>

namespace vrlkrt {
namespace {

constexpr std::size_t maxNameLength = 128;
constexpr int maxCount = 65535;
/// The top, its functions, and the members of one function.
constexpr std::size_t keptDepth = 3;

/// Authors may leave out what the packer can fill in.
enum class Form { author, packed };

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Letters, digits and the characters of `others`, starting with a letter or one of `firstOthers`.
bool isWord(std::string_view text, std::string_view firstOthers, std::string_view others) {
    if (text.empty() || text.size() > maxNameLength) {
        return false;
    }
    if (!isLetter(text.front()) && firstOthers.find(text.front()) == std::string_view::npos) {
        return false;
    }
    return std::all_of(text.begin(), text.end(),
                       [&](char c) { return isLetter(c) || isDigit(c) || others.find(c) != std::string_view::npos; });
}

/// A member of an object of the manifest, with the words that name it: "'name'", "'symbol' of functions[2]".
struct Place {
    const JsonValue& object;
    std::string within;

    std::string words(const std::string& member) const { return "'" + member + "'" + within; }

    const JsonValue& member(const std::string& name) const {
        const JsonValue* found = object.find(name);
        if (found == nullptr) {
            failManifest("the member " + words(name) + " is missing");
        }
        return *found;
    }

    std::string text(const std::string& name) const { return textOf(name, member(name)); }

    std::string textOf(const std::string& name, const JsonValue& value) const {
        if (!value.scalar.is_string()) {
            failManifest("the member " + words(name) + " must be a string, not " + value.typeName());
        }
        return value.scalar.get<std::string>();
    }

    std::string optionalText(const char* name, const std::string& otherwise) const {
        return object.find(name) != nullptr ? text(name) : otherwise;
    }

    const JsonValue& typed(const char* name, JsonValue::Kind kind, const char* kindWords) const {
        const JsonValue& value = member(name);
        if (value.kind != kind) {
            failManifest("the member " + words(name) + " must be " + kindWords + ", not " + value.typeName());
        }
        return value;
    }
};

std::string readName(const Place& top) {
    std::string name = top.text("name");
    if (!isWord(name, "", "_-.")) {
        failManifest("the member 'name' must be a letter followed by letters, digits, '_', '-' or '.', not '" + name +
                     "'");
    }
    return name;
}

std::string readVersion(const Place& top) {
    std::string version = top.text("version");
    if (!isWord(version, "0123456789", "+-.")) {
        failManifest("the member 'version' must be made of letters, digits, '+', '-' and '.', not '" + version + "'");
    }
    return version;
}

int readWholeNumber(const Place& place, const char* member) {
    const JsonValue& value = place.member(member);
    if (!value.scalar.is_number_unsigned() || value.scalar.get<std::uint64_t>() > std::uint64_t{maxCount}) {
        failManifest("the member " + place.words(member) + " must be a whole number from 0 to " +
                     std::to_string(maxCount) + ", not " + value.shown());
    }
    return value.scalar.get<int>();
}

std::optional<int> readCount(const Place& place, const char* member) {
    return place.object.find(member) != nullptr ? std::optional<int>(readWholeNumber(place, member)) : std::nullopt;
}

bool hasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

vrlComponentFunction readFunction(const Place& place, Form form) {
    vrlComponentFunction function;
    function.name = place.text("name");
    if (!isWord(function.name, "", "_")) {
        failManifest("the member 'name'" + place.within +
                     " must be a letter followed by letters, digits or '_', not '" + function.name + "'");
    }
    function.symbol = form == Form::author ? place.optionalText("symbol", function.name) : place.text("symbol");
    if (!isWord(function.symbol, "_", "_")) {
        failManifest("the member 'symbol'" + place.within + " must be the name of a C function, not '" +
                     function.symbol + "'");
    }
    function.help = form == Form::author ? place.optionalText("help", "") : place.text("help");
    if (hasControlCharacter(function.help)) {
        failManifest("the member 'help'" + place.within + " must be one line of text");
    }
    function.minimumInputs = readCount(place, "minimumInputs");
    function.maximumInputs = readCount(place, "maximumInputs");
    function.maximumOutputs = readCount(place, "maximumOutputs");
    if (function.minimumInputs.value_or(0) > function.maximumInputs.value_or(maxCount)) {
        failManifest("the member 'minimumInputs'" + place.within + " must not be greater than 'maximumInputs'");
    }
    return function;
}

std::vector<vrlComponentFunction> readFunctions(const Place& top, Form form) {
    std::vector<vrlComponentFunction> functions;
    std::set<std::string> names;
    for (const auto& [unnamed, item] : top.typed("functions", JsonValue::Kind::array, "an array").members) {
        const std::string where = "functions[" + std::to_string(functions.size()) + "]";
        if (item.kind != JsonValue::Kind::object) {
            failManifest(where + " must be an object, not " + item.typeName());
        }
        functions.push_back(readFunction({item, " of " + where}, form));
        if (!names.insert(functions.back().name).second) {
            failManifest("the function '" + functions.back().name + "' is there twice");
        }
    }
    return functions;
}

void checkPath(const std::string& member, const std::string& path) {
    const std::string problem = entryPathProblem(path);
    if (!problem.empty()) {
        failManifest("the member '" + member + "' names '" + path + "': " + problem);
    }
}

std::map<std::string, std::string> readLibraries(const Place& top) {
    std::map<std::string, std::string> libraries;
    const Place inside{top.typed("libraries", JsonValue::Kind::object, "an object"), " of 'libraries'"};
    for (const auto& [name, value] : inside.object.members) {
        const std::string problem = platformKeyProblem(name);
        if (!problem.empty()) {
            failManifest("the platform '" + name + "' of 'libraries' " + problem);
        }
        libraries[name] = inside.textOf(name, value);
        checkPath("libraries", libraries[name]);
    }
    return libraries;
}

std::map<std::string, std::string> readDigests(const Place& top) {
    std::map<std::string, std::string> digests;
    const Place inside{top.typed("sha256", JsonValue::Kind::object, "an object"), " of 'sha256'"};
    for (const auto& [name, value] : inside.object.members) {
        checkPath("sha256", name);
        const std::string digest = inside.textOf(name, value);
        if (!isSha256Hex(digest)) {
            failManifest("the member '" + name + "' of 'sha256' must be 64 lower-case hexadecimal digits");
        }
        digests[name] = digest;
    }
    return digests;
}

void refuseUnknownMembers(const JsonValue& object, const std::string& within, const std::vector<std::string>& known) {
    for (const auto& [name, value] : object.members) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            failManifest("the member '" + name + "'" + within + " is not known");
        }
    }
}

void refuseUnknownMembersEverywhere(const Place& top) {
    refuseUnknownMembers(top.object, "", {"name", "version", "functions", "libraries"});
    std::size_t number = 0;
    for (const auto& [unnamed, function] : top.member("functions").members) {
        refuseUnknownMembers(function, " of functions[" + std::to_string(number++) + "]",
                             {"name", "symbol", "help", "minimumInputs", "maximumInputs", "maximumOutputs"});
    }
}

}  // namespace

std::string hostPlatform() {
    utsname host{};
    uname(&host);
    std::string system = host.sysname;
    std::transform(system.begin(), system.end(), system.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
#if defined(__x86_64__)
    return system + "-x86_64";
#elif defined(__aarch64__)
    return system + "-aarch64";
#else
    return system + "-" + host.machine;
#endif
}

std::string platformKeyProblem(std::string_view key) {
    const std::size_t dash = key.find('-');
    const bool fine = dash != std::string_view::npos && isWord(key.substr(0, dash), "", "") &&
                      isWord(key.substr(dash + 1), "0123456789", "_");
    return fine ? "" : "must have the form system-architecture, such as linux-x86_64";
}

Manifest parseManifest(std::string_view text) {
    const JsonValue json = parseJson(text, keptDepth);
    const Place top{json, ""};
    Manifest manifest;
    manifest.name = readName(top);
    manifest.version = readVersion(top);
    manifest.abi = readWholeNumber(top, "abi");
    manifest.functions = readFunctions(top, Form::packed);
    manifest.libraries = readLibraries(top);
    manifest.digests = readDigests(top);
    return manifest;
}

Manifest parseAuthorManifest(std::string_view text) {
    const JsonValue json = parseJson(text, keptDepth);
    const Place top{json, ""};
    Manifest manifest;
    manifest.name = readName(top);
    manifest.version = readVersion(top);
    manifest.functions = readFunctions(top, Form::author);
    if (json.find("libraries") != nullptr) {
        manifest.libraries = readLibraries(top);
    }
    refuseUnknownMembersEverywhere(top);
    return manifest;
}

}  // namespace vrlkrt
