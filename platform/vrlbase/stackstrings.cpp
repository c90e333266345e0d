#include "vrlbase/vrlbase.h"

std::vector<std::string> createStackStrings(const std::vector<Norvane::vrl::vrlTAVRIXStackLine>& stack) {
    std::vector<std::string> texts;
    texts.reserve(stack.size());
    for (const Norvane::vrl::vrlTAVRIXStackLine& line : stack) {
        std::string text = "at " + line.function;
        if (!line.file.empty()) {
            text += " (" + line.file + (line.line > 0 ? ":" + std::to_string(line.line) : "") + ")";
        }
        texts.push_back(text);
    }
    return texts;
}
