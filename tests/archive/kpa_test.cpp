#include "archivetesting.h"
#include "craftedzip.h"

#include "commandline.h"
#include "packing.h"
#include "values.h"

#include "vrlkrt/digest.h"
#include "vrlkrt/extraction.h"
#include "vrlkrt/manifest.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

void redirect(int stream, const std::string& path) {
    if (dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), stream) < 0) {
        _exit(126);
    }
}

/// Runs the tool with the component cache below `folder`.
Outcome kpaIn(const TestFolder& folder, const std::vector<std::string>& words) {
    const pid_t child = fork();
    if (child == 0) {
        redirect(STDOUT_FILENO, folder / "stdout");
        redirect(STDERR_FILENO, folder / "stderr");
        setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
        std::vector<char*> arguments{const_cast<char*>("kpa")};
        for (const std::string& word : words) {
            arguments.push_back(const_cast<char*>(word.c_str()));
        }
        arguments.push_back(nullptr);
        execv(KPA_EXECUTABLE, arguments.data());
        _exit(127);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readText(folder / "stdout"),
            readText(folder / "stderr")};
}

constexpr const char* authorManifest =
    R"({"name": "sample", "version": "0.9", "functions": [{"name": "twice", "help": "doubles"}]})";

/// The folder of a component beside a library for this platform.
void writeComponent(const TestFolder& folder) {
    writeText(folder / "c/component.json", authorManifest);
    writeText(folder / "c/data/a.txt", "aaa");
    writeText(folder / "x.so", "library");
}

struct UsageCase {
    std::vector<std::string> words;
    int exitCode;
    const char* err;
};

TEST(KpaTool, TellsWhatIsWrongAndEndsWithTheRightCode) {
    const TestFolder folder;
    writeComponent(folder);
    writeText(folder / "empty/readme.txt", "no component");
    writeText(folder / "text.kpa", "no archive");
    const std::string c = folder / "c";
    const std::string out = folder / "o.kpa";
    const UsageCase table[] = {
        {{}, 2, "usage: kpa COMMAND"},
        {{"unpack"}, 2, "kpa: there is no command 'unpack'\nTry 'kpa --help'.\n"},
        {{"pack"}, 2, "kpa pack: the folder of the component is missing\nTry 'kpa pack --help'.\n"},
        {{"pack", c}, 2, "kpa pack: the archive to write is missing: name it with -o FILE\n"},
        {{"pack", c, "-o"}, 2, "kpa pack: the option --output needs a value\n"},
        {{"pack", c, "-o", out, "-o", out}, 2, "kpa pack: the option --output is given twice\n"},
        {{"pack", c, "d", "-o", out}, 2, "kpa pack: 'd' is one word too many\n"},
        {{"pack", c, "--fast", "-o", out}, 2, "kpa pack: there is no option --fast"},
        {{"pack", c, "-o", out, "--library", "x.so"}, 2, "kpa pack: --library takes PLATFORM=FILE, not 'x.so'\n"},
        {{"pack", c, "-o", out, "--library=linux=x.so"}, 2, "kpa pack: the platform 'linux' must have the form"},
        {{"list"}, 2, "kpa list: the archive is missing\n"},
        {{"verify"}, 2, "kpa verify: the archive is missing\n"},
        {{"call", "x.kpa"}, 2, "kpa call: the function is missing\n"},
        {{"call", SHOWCASE_ARCHIVE, "same", "--nargout", "two"},
         2,
         "kpa call: --nargout takes a whole number from 0 to 1000"},
        {{"call", "x.kpa", "f", "[1 2; 3]"},
         2,
         "kpa call: row 2 of the matrix [1 2; 3] has 1 elements, and row 1 has 2"},
        {{"call", "x.kpa", "f", "[1 x]"}, 2, "kpa call: 'x' in the matrix [1 x] is not a number\n"},
        {{"pack", c, "-o", out}, 1, "kpa pack: there is no library for any platform"},
        {{"pack", folder / "no", "-o", out}, 1, "/no is not a folder\n"},
        {{"pack", folder / "empty", "-o", out}, 1, "/empty has no component.json\n"},
        {{"pack", c, "-o", out, "--library=linux-x86_64=" + (folder / "y.so")},
         1,
         "/y.so: No such file or directory\n"},
        {{"pack", c, "-o", folder / "no/o.kpa", "--library=linux-x86_64=" + (folder / "x.so")},
         1,
         "kpa pack: can't write"},
        {{"list", folder / "no.kpa"}, 1, "kpa list: can't read"},
        {{"list", folder / "text.kpa"}, 1, "kpa list: The archive is not a zip file.\n"},
        {{"verify", folder / "text.kpa"}, 1, "kpa verify: The archive is not a zip file.\n"},
        {{"call", folder / "text.kpa", "f"}, 1, "kpa call: The archive is not a zip file.\n"},
    };
    for (const UsageCase& c2 : table) {
        const Outcome outcome = kpaIn(folder, c2.words);
        EXPECT_EQ(outcome.exitCode, c2.exitCode) << outcome.err;
        EXPECT_NE(outcome.err.find(c2.err), std::string::npos) << "expected " << c2.err << "\ngot " << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(fs::exists(out));
}

TEST(KpaTool, HelpsForEachCommand) {
    const TestFolder folder;
    const Outcome general = kpaIn(folder, {"--help"});
    EXPECT_EQ(general.exitCode, 0);
    for (const char* command : {"pack", "list", "verify", "call"}) {
        EXPECT_NE(general.out.find(std::string("\n  ") + command), std::string::npos) << general.out;
        const Outcome outcome = kpaIn(folder, {command, "--help"});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.out.rfind(std::string("usage: kpa ") + command, 0), 0U) << outcome.out;
        EXPECT_EQ(outcome.err, "");
    }
}

TEST(KpaTool, PacksListsAndVerifies) {
    const TestFolder folder;
    writeComponent(folder);
    const std::string out = folder / "o.kpa";
    const std::string library = "--library=" + vrlkrt::hostPlatform() + "=" + (folder / "x.so");
    ASSERT_EQ(kpaIn(folder, {"pack", folder / "c", "-o", out, library}).exitCode, 0);
    const std::string bytes = readText(out);
    const Outcome listed = kpaIn(folder, {"list", out});
    EXPECT_EQ(listed.out, "sample 0.9 (abi 1)\narchive sha256 " + vrlkrt::sha256Hex(bytes) +
                              "\nfunctions:\n  twice  doubles\nlibraries:\n  " + vrlkrt::hostPlatform() + "  lib/" +
                              vrlkrt::hostPlatform() + "/x.so\nfiles:\n           3  data/a.txt\n           7  lib/" +
                              vrlkrt::hostPlatform() + "/x.so\n");
    EXPECT_EQ(kpaIn(folder, {"verify", out}).out, out + ": whole (2 files, 10 bytes)\n");

    writeText(folder / "damaged.kpa", CraftedComponent{"sample",
                                                       {{"lib/x.so", "y"}},
                                                       [] {
                                                           CraftedComponent other;
                                                           other.files.pop_back();
                                                           return other.defaultManifest();
                                                       }()}
                                          .zip());
    const Outcome damaged = kpaIn(folder, {"verify", folder / "damaged.kpa"});
    EXPECT_EQ(damaged.exitCode, 1);
    EXPECT_EQ(damaged.err,
              "kpa verify: Archive entry 'lib/x.so': its content does not match its SHA-256 in component.json.\n");
}

TEST(KpaTool, PacksTheSameInputToTheSameBytes) {
    const TestFolder one;
    const TestFolder two;
    const std::string library = "--library=" + vrlkrt::hostPlatform() + "=";
    for (const TestFolder* folder : {&one, &two}) {
        writeComponent(*folder);
    }
    fs::last_write_time(two / "c/data/a.txt", fs::file_time_type::clock::now() - std::chrono::hours(100000));
    setenv("TZ", "Asia/Kathmandu", 1);
    EXPECT_EQ(kpaIn(one, {"pack", one / "c", "-o", one / "c/o.kpa", library + (one / "x.so")}).exitCode, 0);
    unsetenv("TZ");
    EXPECT_EQ(kpaIn(two, {"pack", two / "c", "-o", two / "o.kpa", library + (two / "x.so")}).exitCode, 0);
    EXPECT_EQ(readText(one / "c/o.kpa"), readText(two / "o.kpa"));
    // An archive that lies in the folder is not packed into the next one.
    EXPECT_EQ(kpaIn(one, {"pack", one / "c", "-o", one / "c/o.kpa", library + (one / "x.so")}).exitCode, 0);
    EXPECT_EQ(readText(one / "c/o.kpa"), readText(two / "o.kpa"));
}

TEST(Packing, GivesBackEveryFileThroughAnExtraction) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 10; ++round) {
        const TestFolder folder;
        writeText(folder / "c/component.json", authorManifest);
        writeText(folder / "x.so", "library");
        for (unsigned file = random() % 20; file > 0; --file) {
            std::string content(random() % 3 == 0 ? random() % 200000 : random() % 10, '\0');
            for (char& c : content) {
                c = static_cast<char>(random() % 3 == 0 ? random() : 'z');
            }
            const std::string parents = random() % 2 == 0 ? "" : "d" + std::to_string(random() % 3) + "/e f/";
            writeText(folder / "c/" + parents + "~f" + std::to_string(file) + ".bin", content);
        }
        auto expected = filesBelow(folder / "c");
        const std::string bytes = kpa::packFolder(folder / "c", {{vrlkrt::hostPlatform(), folder / "x.so"}}, "");
        const vrlkrt::ComponentArchive archive = archiveOf(bytes);
        expected["component.json"] = archive.manifestBytes();
        expected["lib/" + vrlkrt::hostPlatform() + "/x.so"] = "library";
        EXPECT_EQ(filesBelow(vrlkrt::placeInFolder(archive, folder / "out").folder), expected);
    }
}

TEST(Packing, RefusesWhatAnArchiveCannotHold) {
    const auto failure = [](const TestFolder& folder) -> std::string {
        try {
            return kpa::packFolder(folder / "c", {{"linux-x86_64", folder / "x.so"}}, "").substr(0, 2);
        } catch (const std::exception& error) {
            return error.what();
        }
    };
    const TestFolder linked;
    writeComponent(linked);
    fs::create_symlink("/etc/passwd", linked / "c/link");
    EXPECT_NE(failure(linked).find("c/link is a link"), std::string::npos);
    const TestFolder named;
    writeComponent(named);
    writeText(named / "c/a\\b", "x");
    EXPECT_NE(failure(named).find("its path has a backslash"), std::string::npos);
    const TestFolder taken;
    writeComponent(taken);
    writeText(taken / "c/lib/linux-x86_64/x.so", "x");
    EXPECT_NE(failure(taken).find("the folder has a file lib/linux-x86_64/x.so"), std::string::npos);
}

TEST(CommandLineValues, AreArraysOfTheRightKind) {
    struct Case {
        const char* word;
        qxClassID classId;
        std::size_t rows;
        std::size_t columns;
        std::vector<double> real;
        std::vector<double> imag;
    };
    const Case table[] = {
        {"3.5", qxDOUBLE_CLASS, 1, 1, {3.5}, {}},
        {"-1e3", qxDOUBLE_CLASS, 1, 1, {-1000}, {}},
        {"2-1.5i", qxDOUBLE_CLASS, 1, 1, {2}, {-1.5}},
        {"[1 2;3 4]", qxDOUBLE_CLASS, 2, 2, {1, 3, 2, 4}, {}},
        {"[ 1, 2 ,3 ]", qxDOUBLE_CLASS, 1, 3, {1, 2, 3}, {}},
        {"[1;2+i]", qxCHAR_CLASS, 0, 0, {}, {}},
        {"[1;2+1i]", qxDOUBLE_CLASS, 2, 1, {1, 2}, {0, 1}},
        {"[]", qxDOUBLE_CLASS, 0, 0, {}, {}},
        {"true", qxLOGICAL_CLASS, 1, 1, {}, {}},
        {"hello", qxCHAR_CLASS, 1, 5, {}, {}},
        {"'3'", qxCHAR_CLASS, 1, 1, {}, {}},
        {"@norm", qxFUNCTION_CLASS, 1, 1, {}, {}},
    };
    for (const Case& c : table) {
        SCOPED_TRACE(c.word);
        if (c.classId == qxCHAR_CLASS && c.rows == 0) {
            EXPECT_THROW(kpa::parseValue(c.word), kpa::UsageError);
            continue;
        }
        const qxArrayOwner array = kpa::parseValue(c.word);
        ASSERT_EQ(qxGetClassID(array.get()), c.classId);
        EXPECT_EQ(qxGetM(array.get()), c.rows);
        EXPECT_EQ(qxGetN(array.get()), c.columns);
        EXPECT_EQ(qxIsComplex(array.get()), !c.imag.empty());
        for (std::size_t i = 0; i < c.real.size(); ++i) {
            EXPECT_EQ(static_cast<const double*>(array->realData())[i], c.real[i]);
        }
        for (std::size_t i = 0; i < c.imag.size(); ++i) {
            EXPECT_EQ(static_cast<const double*>(array->imagData())[i], c.imag[i]);
        }
    }
}

TEST(KpaTool, CallsFunctionsAndTellsTheirFailures) {
    const TestFolder folder;
    const auto call = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"call", SHOWCASE_ARCHIVE});
        return kpaIn(folder, words);
    };
    EXPECT_EQ(call({"shout", "hello"}).out, "HELLO\n");
    const Outcome said = call({"say", "hello there"});
    EXPECT_EQ(said.out, "hello there\n");
    EXPECT_EQ(said.err, "");
    const Outcome warned = call({"caution", "watch out", "--nargout=0"});
    EXPECT_EQ(warned.out, "");
    EXPECT_NE(warned.err.find("Warning: watch out\n"), std::string::npos) << warned.err;
    const Outcome negative = call({"increment", "-3"});
    EXPECT_NE(negative.out.find("-2"), std::string::npos) << negative.out << negative.err;
    const Outcome fewer = call({"fewer", "--nargout", "2"});
    EXPECT_NE(fewer.out.find("result 2:\n(none)\n"), std::string::npos) << fewer.out;
    const Outcome failed = call({"fail_deep", "it broke"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.err.rfind("kpa call: it broke\n", 0), 0U) << failed.err;
    for (const char* function : {"innermost", "middle", "fail_deep", "failing.cpp"}) {
        EXPECT_NE(failed.err.find(function), std::string::npos) << failed.err;
    }
    EXPECT_EQ(call({"no_such_function"}).exitCode, 1);
    EXPECT_TRUE(fs::exists(folder / "cache"));
}

}  // namespace
