#pragma once

#include "craftedzip.h"

#include "support/testfolder.h"
#include "vrlbase/exceptions.h"
#include "vrlkrt/archive/archive.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

/// A user who owns nothing on any system.
constexpr unsigned strangeUser = 54321;

using loomkit::test::readText;
using loomkit::test::TestFolder;
using loomkit::test::writeText;

/// Every file below a folder, by its path relative to it, with its content.
inline std::map<std::string, std::string> filesBelow(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const std::filesystem::directory_entry& item : std::filesystem::recursive_directory_iterator(folder)) {
        if (item.is_regular_file()) {
            files[item.path().lexically_relative(folder).string()] = readText(item.path().string());
        }
    }
    return files;
}

/// Names directly in a folder, sorted and each followed by a blank.
inline std::string namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const std::filesystem::directory_entry& item : std::filesystem::directory_iterator(folder)) {
        names.insert(item.path().filename().string());
    }
    std::string text;
    for (const std::string& name : names) {
        text += name + " ";
    }
    return text;
}

/// 0 where there is nothing.
inline std::uint64_t inodeOf(const std::string& path) {
    struct stat state {};
    return stat(path.c_str(), &state) == 0 ? state.st_ino : 0;
}

inline vrlkrt::ComponentArchive archiveOf(std::string bytes, const vrlkrt::ArchiveLimits& limits = {}) {
    return vrlkrt::ComponentArchive(std::make_shared<const std::string>(std::move(bytes)), limits);
}

/// The message of the vrlBaseException that `body` throws; "" when it throws nothing. Any other exception passes.
template <typename Body>
std::string failureOf(Body body) {
    try {
        body();
    } catch (const Norvane::vrl::vrlBaseException& error) {
        return error.what();
    }
    return "";
}

/// Expects `body` to fail with a message in which `text` stands.
template <typename Body>
void expectFailure(const std::string& text, Body body, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE()) {
    const std::string failure = failureOf(body);
    if (failure.find(text) == std::string::npos || failure.empty()) {
        ADD_FAILURE_AT(file, line) << "'" << failure << "', not '" << text << "'";
    }
}
