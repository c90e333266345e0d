#include "vrlkrt/archive/manifest.h"

#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/printable.h"

#include "vrlbase/exceptions.h"

#include <nlohmann/json.hpp>

#include <sys/utsname.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>

namespace vrlkrt {
namespace {

using Json = nlohmann::json;

constexpr std::size_t maxNameLength = 128;
constexpr int maxCount = 65535;

/// Authors may leave out what the packer can fill in.
enum class Form { author, packed };

[[noreturn]] void fail(const std::string& problem) {
    throw Norvane::vrl::vrlBaseException("component.json: " + printable(problem, longestQuote) + ".");
}

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
    const Json& object;
    std::string within;

    std::string words(const char* member) const { return "'" + std::string(member) + "'" + within; }

    const Json& member(const char* name) const {
        const auto found = object.find(name);
        if (found == object.end()) {
            fail("the member " + words(name) + " is missing");
        }
        return *found;
    }

    std::string text(const char* name) const {
        const Json& value = member(name);
        if (!value.is_string()) {
            fail("the member " + words(name) + " must be a string, not " + value.type_name());
        }
        return value.get<std::string>();
    }

    std::string optionalText(const char* name, const std::string& otherwise) const {
        return object.contains(name) ? text(name) : otherwise;
    }

    const Json& typed(const char* name, Json::value_t type, const char* typeWords) const {
        const Json& value = member(name);
        if (value.type() != type) {
            fail("the member " + words(name) + " must be " + typeWords + ", not " + value.type_name());
        }
        return value;
    }
};

/// Refuses an object that has a member twice, of which readers take one or the other. Sees the JSON as it is parsed.
class MemberWatch {
public:
    bool operator()(int, Json::parse_event_t event, const Json& parsed) {
        if (event == Json::parse_event_t::object_start) {
            open_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            open_.pop_back();
        } else if (event == Json::parse_event_t::key && !open_.back().insert(parsed.get<std::string>()).second) {
            fail("the member '" + parsed.get<std::string>() + "' is there twice");
        }
        return true;
    }

private:
    std::vector<std::set<std::string>> open_;  ///< members so far of the objects around the place, outermost first
};

Json parseJson(std::string_view text) {
    // Either ends or starts the text for one reader and not for another.
    if (text.find('\0') != std::string_view::npos || text.substr(0, 3) == "\xEF\xBB\xBF") {
        fail("it has a NUL character or a byte order mark");
    }
    Json json;
    MemberWatch watch;
    try {
        json = Json::parse(text.begin(), text.end(), std::ref(watch));
    } catch (const Json::exception& error) {
        std::string what = error.what();
        const std::size_t tagEnd = what.find("] ");
        fail(tagEnd == std::string::npos ? what : what.substr(tagEnd + 2));
    }
    if (!json.is_object()) {
        fail(std::string("the top must be an object, not ") + json.type_name());
    }
    return json;
}

std::string readName(const Place& top) {
    std::string name = top.text("name");
    if (!isWord(name, "", "_-.")) {
        fail("the member 'name' must be a letter followed by letters, digits, '_', '-' or '.', not '" + name + "'");
    }
    return name;
}

std::string readVersion(const Place& top) {
    std::string version = top.text("version");
    if (!isWord(version, "0123456789", "+-.")) {
        fail("the member 'version' must be made of letters, digits, '+', '-' and '.', not '" + version + "'");
    }
    return version;
}

/// A value as an error shows it. Arrays and objects go by their kind: their text has no bound, and nor has its nesting.
std::string shown(const Json& value) {
    return value.is_structured() ? value.type_name() : value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

int readWholeNumber(const Place& place, const char* member) {
    const Json& value = place.member(member);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > std::uint64_t{maxCount}) {
        fail("the member " + place.words(member) + " must be a whole number from 0 to " + std::to_string(maxCount) +
             ", not " + shown(value));
    }
    return value.get<int>();
}

std::optional<int> readCount(const Place& place, const char* member) {
    return place.object.contains(member) ? std::optional<int>(readWholeNumber(place, member)) : std::nullopt;
}

bool hasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

vrlComponentFunction readFunction(const Place& place, Form form) {
    vrlComponentFunction function;
    function.name = place.text("name");
    if (!isWord(function.name, "", "_")) {
        fail("the member 'name'" + place.within + " must be a letter followed by letters, digits or '_', not '" +
             function.name + "'");
    }
    function.symbol = form == Form::author ? place.optionalText("symbol", function.name) : place.text("symbol");
    if (!isWord(function.symbol, "_", "_")) {
        fail("the member 'symbol'" + place.within + " must be the name of a C function, not '" + function.symbol + "'");
    }
    function.help = form == Form::author ? place.optionalText("help", "") : place.text("help");
    if (hasControlCharacter(function.help)) {
        fail("the member 'help'" + place.within + " must be one line of text");
    }
    function.minimumInputs = readCount(place, "minimumInputs");
    function.maximumInputs = readCount(place, "maximumInputs");
    function.maximumOutputs = readCount(place, "maximumOutputs");
    if (function.minimumInputs.value_or(0) > function.maximumInputs.value_or(maxCount)) {
        fail("the member 'minimumInputs'" + place.within + " must not be greater than 'maximumInputs'");
    }
    return function;
}

std::vector<vrlComponentFunction> readFunctions(const Place& top, Form form) {
    std::vector<vrlComponentFunction> functions;
    std::set<std::string> names;
    for (const Json& item : top.typed("functions", Json::value_t::array, "an array")) {
        const std::string where = "functions[" + std::to_string(functions.size()) + "]";
        if (!item.is_object()) {
            fail(where + " must be an object, not " + item.type_name());
        }
        functions.push_back(readFunction({item, " of " + where}, form));
        if (!names.insert(functions.back().name).second) {
            fail("the function '" + functions.back().name + "' is there twice");
        }
    }
    return functions;
}

void checkPath(const std::string& member, const std::string& path) {
    const std::string problem = entryPathProblem(path);
    if (!problem.empty()) {
        fail("the member '" + member + "' names '" + path + "': " + problem);
    }
}

std::map<std::string, std::string> readLibraries(const Place& top) {
    std::map<std::string, std::string> libraries;
    const Place inside{top.typed("libraries", Json::value_t::object, "an object"), " of 'libraries'"};
    for (const auto& item : inside.object.items()) {
        const std::string problem = platformKeyProblem(item.key());
        if (!problem.empty()) {
            fail("the platform '" + item.key() + "' of 'libraries' " + problem);
        }
        libraries[item.key()] = inside.text(item.key().c_str());
        checkPath("libraries", libraries[item.key()]);
    }
    return libraries;
}

std::map<std::string, std::string> readDigests(const Place& top) {
    std::map<std::string, std::string> digests;
    const Place inside{top.typed("sha256", Json::value_t::object, "an object"), " of 'sha256'"};
    for (const auto& item : inside.object.items()) {
        checkPath("sha256", item.key());
        const std::string digest = inside.text(item.key().c_str());
        if (!isSha256Hex(digest)) {
            fail("the member '" + item.key() + "' of 'sha256' must be 64 lower-case hexadecimal digits");
        }
        digests[item.key()] = digest;
    }
    return digests;
}

void refuseUnknownMembers(const Json& object, const std::string& within, const std::vector<std::string>& known) {
    for (const auto& item : object.items()) {
        if (std::find(known.begin(), known.end(), item.key()) == known.end()) {
            fail("the member '" + item.key() + "'" + within + " is not known");
        }
    }
}

void refuseUnknownMembersEverywhere(const Json& json) {
    refuseUnknownMembers(json, "", {"name", "version", "functions", "libraries"});
    std::size_t number = 0;
    for (const Json& function : json.at("functions")) {
        refuseUnknownMembers(function, " of functions[" + std::to_string(number++) + "]",
                             {"name", "symbol", "help", "minimumInputs", "maximumInputs", "maximumOutputs"});
    }
}

nlohmann::ordered_json functionJson(const vrlComponentFunction& function) {
    nlohmann::ordered_json json;
    json["name"] = function.name;
    json["symbol"] = function.symbol;
    json["help"] = function.help;
    const auto addCount = [&](const char* member, const std::optional<int>& count) {
        if (count) {
            json[member] = *count;
        }
    };
    addCount("minimumInputs", function.minimumInputs);
    addCount("maximumInputs", function.maximumInputs);
    addCount("maximumOutputs", function.maximumOutputs);
    return json;
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
    const Json json = parseJson(text);
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
    const Json json = parseJson(text);
    const Place top{json, ""};
    Manifest manifest;
    manifest.name = readName(top);
    manifest.version = readVersion(top);
    manifest.functions = readFunctions(top, Form::author);
    if (json.contains("libraries")) {
        manifest.libraries = readLibraries(top);
    }
    refuseUnknownMembersEverywhere(json);
    return manifest;
}

std::string manifestText(const Manifest& manifest) {
    nlohmann::ordered_json json;
    json["name"] = manifest.name;
    json["version"] = manifest.version;
    json["abi"] = manifest.abi;
    json["functions"] = nlohmann::ordered_json::array();
    for (const vrlComponentFunction& function : manifest.functions) {
        json["functions"].push_back(functionJson(function));
    }
    json["libraries"] = nlohmann::ordered_json(manifest.libraries);
    json["sha256"] = nlohmann::ordered_json(manifest.digests);
    return json.dump(2) + "\n";
}

}  // namespace vrlkrt
