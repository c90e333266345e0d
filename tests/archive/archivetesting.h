#pragma once

#include "craftedzip.h"

#include "support/testfolder.h"
#include "vrlbase/exceptions.h"
#include "vrlkrt/archive/archive.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>

/// A user who owns nothing on any system.
constexpr unsigned strangeUser = 54321;

using loomkit::test::readText;
using loomkit::test::TestFolder;
using loomkit::test::writeText;

/// Every file below a folder, by its path relative to it, with its content.
std::map<std::string, std::string> filesBelow(const std::string& folder);

/// Names directly in a folder, sorted and each followed by a blank.
std::string namesIn(const std::string& folder);

/// 0 where there is nothing.
std::uint64_t inodeOf(const std::string& path);

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
