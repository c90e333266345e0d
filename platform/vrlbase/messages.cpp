#include "vrlbase/vrlbase.h"

std::vector<std::string> createStackStrings(const std::vector<Norvane::vrl::vrlTAVRIXStackLine>& stack) {
    std::vector<std::string> texts;
    texts.reserve(stack.size());
    for (const Norvane::vrl::vrlTAVRIXStackLine& line : stack) {
        if (line.line == Norvane::vrl::vrlIdentifierLine) {
            texts.push_back("identifier " + line.function);
            continue;
        }
        std::string text = "at " + line.function;
        if (!line.file.empty()) {
            text += " (" + line.file + (line.line > 0 ? ":" + std::to_string(line.line) : "") + ")";
        }
        texts.push_back(text);
    }
    return texts;
}

std::string vrlShortText(std::string_view text) {
    constexpr std::size_t longest = 200;
    if (text.size() <= longest) {
        return std::string(text);
    }
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return std::string(text.substr(0, end)) + "...";
}
