#include "archivetesting.h"

#include "componentrun.h"
#include "elfsymbols.h"
#include "files.h"
#include "packing.h"
#include "usageerror.h"
#include "values.h"

#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/extraction.h"
#include "vrlkrt/archive/manifest.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <tuple>
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

/// Runs the tool with the component cache below `folder`; `out` is where its output goes instead of the outcome.
Outcome kpaIn(const TestFolder& folder, const std::vector<std::string>& words, const char* out = nullptr) {
    const pid_t child = fork();
    if (child == 0) {
        redirect(STDOUT_FILENO, out == nullptr ? folder / "stdout" : out);
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

constexpr const char* showcase = SHOWCASE_ARCHIVE;

constexpr const char* authorManifest =
    R"({"name": "sample", "version": "0.9", "functions": [{"name": "version", "help": "a\u009b2J\u202eb\u2028"}]})";

/// An archive whose library is not the one of its manifest.
std::string damagedArchive() {
    CraftedComponent component;
    component.manifest = component.defaultManifest();
    component.files[0].content = "?";
    return component.zip();
}

/// The folder of a component beside a library for this platform.
void writeComponent(const TestFolder& folder) {
    writeText(folder / "c/component.json", authorManifest);
    writeText(folder / "c/data/a.txt", "aaa");
    writeText(folder / "x.so", readText(VERSION_1));
}

TEST(KpaTool, TellsWhatIsWrongAndEndsWithTheRightCode) {
    const TestFolder folder;
    writeComponent(folder);
    writeText(folder / "text.kpa", "no archive");
    writeText(folder / "damaged.kpa", damagedArchive());
    fs::create_directory(folder / "p");
    ASSERT_EQ(mkfifo((folder / "p/pipe").c_str(), 0600), 0);
    writeText(folder / "sparse", "");
    fs::resize_file(folder / "sparse", std::uintmax_t{6} << 30);
    const std::string c = folder / "c";
    const std::string o = folder / "o.kpa";
    const std::string text = folder / "text.kpa";
    const std::string library = "--library=linux-x86_64=" + (folder / "x.so");
    const std::string absent = "--library=linux-x86_64=" + (folder / "y.so");
    const std::tuple<int, const char*, std::vector<std::string>> table[] = {
        {2, "Usage: kpa [OPTIONS] SUBCOMMAND", {}},
        {2, "kpa: there is no command 'unpack'\nTry 'kpa --help'.\n", {"unpack"}},
        {2, "kpa pack: FOLDER is required\nTry 'kpa pack --help'.\n", {"pack"}},
        {2, "kpa pack: --output: 1 required FILE missing\n", {"pack", c, "-o"}},
        {2, "kpa pack: --output: At Most 1 required but received 2\n", {"pack", c, "-o", o, "-o", o}},
        {2, "kpa pack: The following argument was not expected: --fast\n", {"pack", c, "--fast", "-o", o}},
        {2,
         "kpa call: there is no option --fast; a value that starts with '-' goes after '--'\n",
         {"call", showcase, "shout", "--fast"}},
        {2, "kpa list: The following argument was not expected: more\n", {"list", showcase, "more"}},
        {2, "kpa pack: the platform 'linux' must have the form", {"pack", c, "-o", o, "--library=linux=x.so"}},
        {2, "kpa pack: there are two libraries for linux-x86_64\n", {"pack", c, "-o", o, library, absent}},
        {2, "kpa call: --nargout: Value two not in range 0 to 1000\n", {"call", showcase, "same", "--nargout", "two"}},
        {2, "row 2 of the matrix [1 2; 3] has 1 elements, and row 1 has 2", {"call", "x.kpa", "f", "[1 2; 3]"}},
        {2, "kpa call: 'x' in the matrix [1 x] is not a number\n", {"call", "x.kpa", "f", "[1 x]"}},
        {1, "kpa pack: there is no library for any platform", {"pack", c, "-o", o}},
        {1, "/no is not a folder\n", {"pack", folder / "no", "-o", o}},
        {1, "/pipe is not a file\n", {"pack", folder / "p", "-o", o, library}},
        {1, "/y.so: No such file or directory\n", {"pack", c, "-o", o, absent}},
        {1, "kpa pack: can't write", {"pack", c, "-o", folder / "no/o.kpa", library}},
        {1, "kpa list: can't read", {"list", folder / "no.kpa"}},
        {1, "kpa list: can't read /dev/zero: it is not a file\n", {"list", "/dev/zero"}},
        {1, "pipe: it is not a file\n", {"list", folder / "p/pipe"}},
        {1, ": it is a folder\n", {"verify", c}},
        {1, "sparse: it has 6442450944 bytes, and 2147483648 are allowed\n", {"list", folder / "sparse"}},
        {1, "/\\x1b[2J\\u202e: No such file or directory\n", {"list", folder / "\x1B[2J\xE2\x80\xAE"}},
        {2, "kpa: there is no command '\\x1b[2J'", {"\x1B[2J"}},
        {1, "kpa list: The archive is not a zip file.\n", {"list", text}},
        {1, "Archive entry 'lib/x.so': its content does not match its SHA-256", {"verify", folder / "damaged.kpa"}},
        {1, "has no function \"shuot\"; did you mean shout\n", {"call", showcase, "shuot"}},
    };
    for (const auto& [exitCode, err, words] : table) {
        const Outcome outcome = kpaIn(folder, words);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.err;
        EXPECT_NE(outcome.err.find(err), std::string::npos) << err << "\nnot in " << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(fs::exists(o));
    EXPECT_EQ(kpaIn(folder, {"list", showcase}, "/dev/full").err, "kpa: can't write to the standard output\n");
    EXPECT_EQ(kpaIn(folder, {"--help"}, "/dev/full").exitCode, 1);
}

TEST(KpaTool, PacksListsVerifiesAndHelps) {
    const TestFolder folder;
    writeComponent(folder);
    const std::string out = folder / "o.kpa";
    const std::string library = "--library=" + vrlkrt::hostPlatform() + "=" + (folder / "x.so");
    ASSERT_EQ(kpaIn(folder, {"pack", folder / "c", "-o", out, library}).exitCode, 0);
    const std::string bytes = readText(out);
    const Outcome listed = kpaIn(folder, {"list", out});
    const std::string size = std::to_string(readText(VERSION_1).size());
    EXPECT_EQ(listed.out, "sample 0.9 (abi 1)\narchive sha256 " + vrlkrt::sha256Hex(bytes) +
                              "\nfunctions:\n  version  a\\u009b2J\\u202eb\\u2028\nlibraries:\n  " +
                              vrlkrt::hostPlatform() + "  lib/" + vrlkrt::hostPlatform() +
                              "/x.so\nfiles:\n           3  data/a.txt\n" + std::string(12 - size.size(), ' ') + size +
                              "  lib/" + vrlkrt::hostPlatform() + "/x.so\n");
    EXPECT_EQ(kpaIn(folder, {"verify", out}).out,
              out + ": whole (2 files, " + std::to_string(3 + std::stoul(size)) + " bytes)\n");
    EXPECT_EQ(kpaIn(folder, {"--version"}).out, "kpa " KPA_VERSION ", abi 1\n");
    for (const char* command : {"pack", "list", "verify", "call"}) {
        const std::string help = kpaIn(folder, {command, "--help"}).out;
        EXPECT_NE(help.find(std::string("Usage: kpa ") + command + " [OPTIONS]"), std::string::npos) << help;
        EXPECT_EQ(kpaIn(folder, {"help", command}).out, help);
    }
}

TEST(KpaTool, VerifiesThatLibrariesDefineTheFunctions) {
    const TestFolder folder;
    // other: a platform that the library is for besides
    const std::tuple<const char*, std::vector<const char*>, const char*, std::vector<std::string>> table[] = {
        {VERSION_1, {"version"}, "linux-s390x", {}},
        {VERSION_1,
         {"gone", "lost"},
         "",
         {"function gone has the symbol gone, which is no function of lib/x.so\n", "lost"}},
        {VERSION_1, {"malloc"}, "", {"function malloc has the symbol malloc, which is no function of lib/x.so\n"}},
        {VERSION_1, {"version", "krtPrint"}, "linux-s390x", {"krtPrint"}},
        {BROKEN_UNDEFINED, {"version"}, "", {"can't be loaded", "undefined symbol: nobodyDefinesThis"}},
        {BROKEN_CRASHING, {"version"}, "", {"lib/x.so ends the process that loads it: signal 6 (Aborted)\n"}},
        {BROKEN_LEAVING, {"version"}, "", {"lib/x.so ends the process that loads it: exit code 0\n"}},
    };
    for (const auto& [library, symbols, other, problems] : table) {
        CraftedComponent component;
        component.files = {{"lib/x.so", readText(library)}};
        nlohmann::json manifest = nlohmann::json::parse(component.defaultManifest());
        manifest["functions"].clear();
        for (const char* symbol : symbols) {
            manifest["functions"].push_back({{"name", symbol}, {"symbol", symbol}, {"help", ""}});
        }
        if (*other != '\0') {
            manifest["libraries"][other] = "lib/x.so";
        }
        component.manifest = manifest.dump();
        writeText(folder / "x.kpa", component.zip());
        const Outcome outcome = kpaIn(folder, {"verify", folder / "x.kpa"});
        EXPECT_EQ(outcome.exitCode, problems.empty() ? 0 : 1) << outcome.err;
        for (const std::string& problem : problems) {
            EXPECT_NE(outcome.err.find(problem), std::string::npos) << problem << "\nnot in " << outcome.err;
        }
    }
}

TEST(KpaTool, TellsWhichLibrariesItDidNotLookInto) {
    const TestFolder folder;
    CraftedComponent component;
    component.files = {{"lib/x.so", readText(VERSION_1)}, {"lib/x.dylib", "\xCF\xFA\xED\xFE"}};
    nlohmann::json manifest = nlohmann::json::parse(component.defaultManifest());
    manifest["functions"] = {{{"name", "version"}, {"symbol", "version"}, {"help", ""}}};
    for (const auto& [platform, exitCode] : {std::pair("darwin-arm64", 0), std::pair("linux-s390x", 1)}) {
        manifest["libraries"] = {{vrlkrt::hostPlatform(), "lib/x.so"}, {platform, "lib/x.dylib"}};
        component.manifest = manifest.dump();
        writeText(folder / "x.kpa", component.zip());
        const Outcome outcome = kpaIn(folder, {"verify", folder / "x.kpa"});
        EXPECT_EQ(outcome.exitCode, exitCode);
        const std::string said =
            exitCode == 0 ? "for darwin-arm64 is no ELF file" : "it is the library for linux-s390x, but is no ELF file";
        EXPECT_NE((outcome.out + outcome.err).find(said), std::string::npos) << outcome.out << outcome.err;
    }
}

/// Of a library that this process can't load.
TEST(KpaTool, FindsFunctionsInTheSymbolsOfALibrary) {
    const std::string whole = readText(VERSION_1);
    EXPECT_EQ(kpa::definedFunctions(whole).count("version"), 1U);
    EXPECT_EQ(kpa::definedFunctions(whole).count("malloc"), 0U);
    for (std::size_t length = 0; length < whole.size(); length += 61) {
        EXPECT_EQ(kpa::definedFunctions(whole.substr(0, length)).count("version"), 0U) << length;
    }
}

TEST(KpaTool, WritesTheArchiveAtItsPlaceOrNotAtAll) {
    const TestFolder folder;
    writeText(folder / "victim", "untouched");
    fs::create_directory(folder / "full");
    fs::create_symlink(folder / "victim", folder / "o.kpa");
    kpa::writeFile(folder / "o.kpa", "archive");
    EXPECT_EQ(readText(folder / "victim"), "untouched");
    EXPECT_FALSE(fs::is_symlink(folder / "o.kpa"));
    EXPECT_EQ(readText(folder / "o.kpa"), "archive");
    struct stat made {};
    const mode_t mask = umask(027);
    kpa::writeFile(folder / "masked", "x");
    umask(mask);
    ASSERT_EQ(stat((folder / "masked").c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777U, 0640U);

    writeText(folder / "full/inner/x", "");
    EXPECT_THROW(kpa::writeFile(folder / "full/inner", "x"), kpa::FileFailure);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{1000, limit.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_THROW(kpa::writeFile(folder / "full/x", std::string(5000, 'x')), kpa::FileFailure);
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(namesIn(folder / "full"), "inner ");
}

TEST(Packing, RefusesWhatAnArchiveCannotHold) {
    const TestFolder folder;
    const auto expectRefused = [&](const char* text) {
        try {
            kpa::packFolder(folder / "c", {{"linux-x86_64", folder / "x.so"}}, "");
            ADD_FAILURE() << "packed in spite of: " << text;
        } catch (const std::exception& error) {
            EXPECT_NE(std::string(error.what()).find(text), std::string::npos) << error.what();
        }
    };
    writeComponent(folder);
    writeText(folder / "c/lib/linux-x86_64/x.so", "x");
    expectRefused("the folder has a file lib/linux-x86_64/x.so");
    writeText(folder / "c/a\\b", "x");
    expectRefused("its path has a backslash");
    fs::rename(folder / "c/a\\b", folder / "c/b");
    fs::create_symlink("/etc/passwd", folder / "c/link");
    expectRefused("c/link is a link");
}

TEST(CommandLineValues, AreArraysOfTheRightKind) {
    const std::pair<const char*, const char*> table[] = {
        {"3.5", "6: 3.5000"},
        {"-1e3", "6: -1000"},
        {"2-1.5i", "6: 2.0000 - 1.5000i"},
        {"[1 2;3 4]", "6: 1  2\n3  4"},
        {"[ 1, 2 ,3 ]", "6: 1  2  3"},
        {"[1;2+1i]", "6: 1 + 0i\n2 + 1i"},
        {"[]", "6: 0-by-0 empty double"},
        {"true", "3: 1"},
        {"hello", "4: hello"},
        {"'3'", "4: 3"},
        {"'[1'", "4: [1"},
        {"info", "4: info"},
        {"@norm", "16: @norm"},
    };
    for (const auto& [word, shown] : table) {
        const qxArrayOwner array = kpa::parseValue(word);
        EXPECT_EQ(std::to_string(qxGetClassID(array.get())) + ": " + shownText(array), shown) << word;
    }
    for (const char* wrong : {"[1;2+i]", "[1 2;3]", "[1;2 3]"}) {
        EXPECT_THROW(kpa::parseValue(wrong), kpa::UsageError) << wrong;
    }
}

TEST(KpaTool, CallsFunctionsAndTellsTheirFailures) {
    const TestFolder folder;
    const auto call = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"call", showcase});
        return kpaIn(folder, words);
    };
    EXPECT_EQ(call({"shout", "hello"}).out, "HELLO\n");
    EXPECT_EQ(call({"shout", "--", "--list"}).out, "--LIST\n");
    EXPECT_EQ(call({"shout", "list"}).out, "LIST\n");
    EXPECT_EQ(call({"increment", "--nargout=1", "-1e3"}).out, "-999\n");
    EXPECT_EQ(call({"increment", "[1,2;3,4]"}).out, "2  3\n4  5\n");
    const Outcome fewer = call({"fewer", "--nargout", "2"});
    EXPECT_NE(fewer.out.find("result 2:\n(none)\n"), std::string::npos) << fewer.out;
    const Outcome failed = call({"fail_deep", "it broke"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.err.rfind("kpa call: it broke\n", 0), 0U) << failed.err;
    EXPECT_NE(failed.err.find("innermost"), std::string::npos) << failed.err;
    EXPECT_TRUE(fs::exists(folder / "cache"));
}

}  // namespace
