#include "vrlkrt/archive/manifest.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <utility>

namespace vrlkrt {
namespace {

std::string quoted(const std::string& text) { return nlohmann::json(text).dump(); }

/// Members or elements between their brackets, one a line, at an indentation.
class JsonLines {
public:
    JsonLines(char open, char close, std::size_t indentation)
        : text_(1, open), close_(close), indentation_(indentation) {}

    void add(const std::string& value) {
        text_ += isEmpty_ ? "\n" : ",\n";
        text_.append(indentation_ + 2, ' ') += value;
        isEmpty_ = false;
    }

    void add(const std::string& name, const std::string& value) { add(quoted(name) + ": " + value); }

    std::string take() {
        if (!isEmpty_) {
            text_.append(1, '\n').append(indentation_, ' ');
        }
        return std::move(text_ += close_);
    }

private:
    std::string text_;
    char close_;
    std::size_t indentation_;
    bool isEmpty_ = true;
};

std::string functionText(const vrlComponentFunction& function) {
    JsonLines lines('{', '}', 4);
    lines.add("name", quoted(function.name));
    lines.add("symbol", quoted(function.symbol));
    lines.add("help", quoted(function.help));
    const auto addCount = [&](const char* member, const std::optional<int>& count) {
        if (count) {
            lines.add(member, std::to_string(*count));
        }
    };
    addCount("minimumInputs", function.minimumInputs);
    addCount("maximumInputs", function.maximumInputs);
    addCount("maximumOutputs", function.maximumOutputs);
    return lines.take();
}

std::string functionsText(const std::vector<vrlComponentFunction>& functions) {
    JsonLines lines('[', ']', 2);
    for (const vrlComponentFunction& function : functions) {
        lines.add(functionText(function));
    }
    return lines.take();
}

std::string textsText(const std::map<std::string, std::string>& texts) {
    JsonLines lines('{', '}', 2);
    for (const auto& [name, text] : texts) {
        lines.add(name, quoted(text));
    }
    return lines.take();
}

}  // namespace

// Only strings pass through nlohmann::json: its arrays and objects ask for memory when they end, and a process that
// has none would end with them.
std::string manifestText(const Manifest& manifest) {
    JsonLines lines('{', '}', 0);
    lines.add("name", quoted(manifest.name));
    lines.add("version", quoted(manifest.version));
    lines.add("abi", std::to_string(manifest.abi));
    lines.add("functions", functionsText(manifest.functions));
    lines.add("libraries", textsText(manifest.libraries));
    lines.add("sha256", textsText(manifest.digests));
    return lines.take() + "\n";
}

}  // namespace vrlkrt
