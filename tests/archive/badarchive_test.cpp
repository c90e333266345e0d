#include "archivetesting.h"

#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/elfcheck.h"

#include <nlohmann/json.hpp>

#include <elf.h>

#include <cstddef>
#include <utility>

namespace {

/// A good archive with one more entry, which the manifest lists unless another one is given.
std::string withFile(const CraftedEntry& entry, const std::string& manifest = "") {
    CraftedComponent component;
    component.manifest = manifest;
    component.files.push_back(entry);
    return component.zip();
}

std::string withMember(const std::string& pointer, const nlohmann::json& value) {
    CraftedComponent component;
    nlohmann::json manifest = nlohmann::json::parse(component.defaultManifest());
    manifest[nlohmann::json::json_pointer(pointer)] = value;
    component.manifest = manifest.dump();
    return component.zip();
}

/// Reads an archive as an extraction does, to the last byte. `message` is part of the refusal; "" where the archive is
/// to be read.
void expectRefusal(const std::string& bytes, const std::string& message, const vrlkrt::ArchiveLimits& limits = {}) {
    const std::string failure = failureOf([&] {
        const vrlkrt::ComponentArchive archive = archiveOf(bytes, limits);
        archive.requireAbi();
        EXPECT_FALSE(archive.hostLibrary().empty());
        archive.verify();
    });
    EXPECT_TRUE(message.empty() ? failure.empty() : failure.find(message) != std::string::npos)
        << "'" << failure << "', not '" << message << "'";
}

/// Beside what both readers of archives, this one and that in Java, are shown in the tests of the other.
TEST(ComponentArchive, IsRefusedByTheNameOfItsBadEntry) {
    const std::string good = CraftedComponent().zip();
    const std::string digits = "0123456789";
    const std::pair<std::string, const char*> table[] = {
        {std::string(good).erase(10, 60), "The archive is truncated or damaged: "},
        {std::string(good).erase(good.rfind("PK\1\2") + 10, 20), "The archive is truncated or damaged: "},
        {withFile({"component.json", "{}"}), "Archive entry 'component.json': it is there twice"},
        {withFile({"lib/x.so", "library"}), "Archive entry 'lib/x.so': it is there twice."},
        {withMember("/libraries", {{"plan9-mips", "lib/x.so"}}), "the component 'sample' has no library for linux-"},
        {withMember("/libraries", nlohmann::json::object()), "it has none at all"},
        {withMember("/abi", 999), "the component 'sample' was built for abi 999"},
        {withFile({std::string("lib/l.so\0.txt", 13), "x"}), "entry 'lib/l.so\\x00.txt': its path has a character"},
        {withFile({"link", "/etc/passwd", 0120777}), "'link': it is a link"},
        {withFile({"tty", "", 0020666}), "'tty': it is a device, pipe or socket"},
        {withFile({"socket", "", 0140666}), "'socket': it is a device, pipe or socket"},
        {withFile({"secret", digits, 0100644, 1}), "'secret': it is encrypted"},
        {withFile({"component.json/a", "x"}), "its folder 'component.json' is a file"},
        {withFile({"liar", digits, 0100644, 0, 4}), "Archive entry 'liar': "},
        {withFile({"liar", digits, 0100644, 0, 4000}), "Archive entry 'liar': "},
        {withFile({"cut", deflated(digits).substr(0, 9), 0100644, 0, 10, {}, 8}), "'cut': its content is damaged"},
        {withFile({"more", deflated(digits) + "x", 0100644, 0, 10, {}, 8}), "'more': its content is damaged: bytes"},
        {withFile({"none", "", 0100644, 0, 0, {}, 8}), "'none': its content is damaged: the packed bytes end early"},
    };
    for (const auto& [bytes, message] : table) {
        expectRefusal(bytes, message);
    }
}

/// Archives that one reader could take for another archive than a second one does.
TEST(ComponentArchive, IsRefusedWhereReadersCouldDiffer) {
    const std::string good = CraftedComponent().zip();
    const std::string local = "PK\3\4";
    const std::string central = "PK\1\2";
    const std::string end = "PK\5\6";
    const std::string two = bytesOf(2, 2);
    const std::string packed = deflated("0123456789");
    const auto descriptor = [&](const char* signature, std::uint32_t size) {
        return signature + bytesOf(0xA684C7C6, 4) + bytesOf(packed.size(), 4) + bytesOf(size, 4);
    };
    const auto described = [&](const std::string& after) {
        const CraftedEntry entry{"d", packed, 0100644, 8, 10, 0xA684C7C6, 8, "", "", "", after};
        return patched(withFile(entry), local, 14, std::string(12, '\0'));
    };
    const std::pair<std::string, const char*> table[] = {
        {withFile({"a", "x", 0100644, 0, {}, {}, 0, "", std::string("a\0", 2)}), "names it 'a\\x00'"},
        {withFile({"gap", "x", 0100644, 0, {}, {}, 0, "", "", "?"}), "'gap': it does not begin where the entry before"},
        {withFile({"gap", "x", 0100644, 0, {}, {}, 0, "", "", "", "?"}), "it has bytes that belong to no entry"},
        {patched(good, central, 42, bytesOf(0, 4)), "'data/table.txt': it does not begin where the entry before it"},
        {good + good, "its end record does not follow the directory that it states"},
        {patched(good, end, 20, two) + "??", "it does not end with the end record of a zip file"},
        {patched(good, end, 20, two), "its end record states several volumes or a comment"},
        {patched(good, end, 8, two + two), "it has bytes that belong to no entry"},
        {patched(good, end, 8, bytesOf(4, 2) + bytesOf(4, 2)), "its directory has fewer entries than its end record"},
        {patched(good, end, 8, two), "its end record states several volumes"},
        {patched(good, end, 4, two), "its end record states several volumes"},
        {patched(good, local, 4, two), "'data/table.txt': its local header states another version"},
        {patched(good, local, 6, two), "its local header states another flags"},
        {patched(good, local, 8, bytesOf(8, 2)), "its local header states another method"},
        {patched(good, local, 10, bytesOf(5, 4)), "its local header states another time"},
        {patched(good, local, 14, bytesOf(5, 4)), "its local header states another checksum"},
        {patched(good, local, 18, bytesOf(4, 4)), "its local header states another packed size"},
        {patched(good, local, 22, bytesOf(4, 4)), "its local header states another size"},
        {patched(good, local, 0, "PK"), ""},
        {patched(good, local, 0, "PK\3\5"), "'data/table.txt': it has no local header where the directory says"},
        {patched(good, central, 6, bytesOf(45, 2)), "it uses features of zip files that archives do not: version 45"},
        {patched(good, central, 8, bytesOf(0x2000, 2)), "features of zip files that archives do not"},
        {patched(good, central, 10, bytesOf(12, 2)), "its method is 12; only 0 (stored) and 8 (deflated)"},
        {patched(good, central, 10, bytesOf(14, 2)), "its method is 14; only 0 (stored) and 8 (deflated)"},
        {patched(good, central, 20, bytesOf(4, 4)), "it has 4 stored bytes, not the 5 that it states"},
        {patched(good, central, 32, two), "it has a comment or lies in another volume"},
        {patched(good, central, 34, two), "it has a comment or lies in another volume"},
        {patched(good, central, 4, std::string(2, '\0')), ""},
        {patched(good, central, 38, bytesOf(0x10, 4)), "'data/table.txt': it is a folder"},
        {patched(good, central, 38, bytesOf(0x08, 4)), "'data/table.txt': it is a device, pipe or socket"},
        {patched(patched(good, central, 4, two), central, 38, bytesOf(0120777U << 16, 4)), "it is a link"},
        {patched(patched(good, central, 4, two), central, 38, bytesOf(0010666U << 16, 4)), "it is a device, pipe"},
        {withFile({"u", "", 0100644, 0, {}, {}, 0, "up" + bytesOf(1, 2) + "x"}), "'u': it has an extra field"},
        {withFile({"u", "", 0100644, 0, {}, {}, 0, "UT" + bytesOf(9, 2) + "x"}), "'u': it has an extra field"},
        {withFile({"u", "", 0100644, 0, {}, {}, 0, "UT" + bytesOf(1, 2) + "xy"}), "'u': it has an extra field"},
        {described(""), "'d': its sizes do not follow its content"},
        {described(descriptor("PK\7\7", 10)), "'d': its sizes do not follow its content"},
        {described(descriptor("PK\7\10", 9)), "'d': its local header states another size"},
        {withFile({"d", "0123456789", 0100644, 8, 10, 0xA684C7C6, 0, "", "", "", descriptor("PK\7\10", 10)}),
         "'d': it is stored with its size behind it"},
        {described(descriptor("PK\7\10", 10)), "'d': its content does not match its SHA-256"},
    };
    for (const auto& [bytes, message] : table) {
        expectRefusal(bytes, message);
    }
}

/// A library with another number at an offset of its headers.
std::string library(std::size_t offset, std::uint64_t value, std::size_t width) {
    return tinyLibrary().replace(offset, width, bytesOf(value, width));
}

TEST(ComponentArchive, HasWholeLibrariesOfTheirPlatform) {
    constexpr std::size_t segment = sizeof(Elf64_Ehdr);
    const std::string whole = readText(VERSION_1);
    const std::pair<std::string, const char*> table[] = {
        {whole, ""},
        {tinyLibrary(), ""},
        {"", "is no ELF file"},
        {"#!/bin/sh", "is no ELF file"},
        {CraftedComponent().zip(), "is no ELF file"},
        {tinyLibrary().substr(0, 63), "is no ELF file"},
        {tinyLibrary().substr(0, 119), "is cut short or damaged: its program headers lie past its end"},
        {whole.substr(0, whole.size() / 2), "is cut short or damaged: its section headers lie past its end"},
        {whole.substr(0, whole.size() - 1), "is cut short or damaged: its section headers lie past its end"},
        {library(offsetof(Elf64_Ehdr, e_ident) + EI_CLASS, ELFCLASS32, 1), "was built for another platform"},
        {library(offsetof(Elf64_Ehdr, e_ident) + EI_DATA, ELFDATA2MSB, 1), "was built for another platform"},
        {library(offsetof(Elf64_Ehdr, e_machine), EM_MIPS, 2), "its machine is 8"},
        {library(offsetof(Elf64_Ehdr, e_type), ET_REL, 2), "is no shared object: its type is 1"},
        {library(offsetof(Elf64_Ehdr, e_phnum), 0, 2), "is damaged: it has no segments"},
        {library(offsetof(Elf64_Ehdr, e_phnum), 2, 2), "its program headers lie past its end"},
        {library(offsetof(Elf64_Ehdr, e_phoff), ~std::uint64_t{0}, 8), "its program headers lie past its end"},
        {library(offsetof(Elf64_Ehdr, e_shoff), ~std::uint64_t{0}, 8), "its section headers lie past its end"},
        {library(segment + offsetof(Elf64_Phdr, p_filesz), 121, 8), "a segment reaches past its end"},
        {library(segment + offsetof(Elf64_Phdr, p_offset), ~std::uint64_t{0}, 8), "a segment reaches past its end"},
        {library(segment + offsetof(Elf64_Phdr, p_memsz), 119, 8), "a segment reaches past its end"},
        {library(segment + offsetof(Elf64_Phdr, p_type), PT_NOTE, 4), "is damaged: it has no segments"},
    };
    const TestFolder folder;
    for (const auto& [content, problem] : table) {
        CraftedComponent component;
        component.files[0].content = content;
        expectRefusal(component.zip(), problem);
        writeText(folder / "x.so", content);
        EXPECT_EQ(vrlkrt::elfProblemOfFile(folder / "x.so", vrlkrt::hostPlatform()),
                  vrlkrt::elfProblem(content, vrlkrt::hostPlatform()));
    }
    EXPECT_EQ(vrlkrt::elfProblem("a library of another kind", "darwin-arm64"), "");
    EXPECT_EQ(vrlkrt::elfProblem(tinyLibrary(), "linux-s390x"), "");
}

TEST(ComponentArchive, ReadsAGoodOne) {
    const CraftedComponent component;
    expectRefusal(component.zip(), "");
    const vrlkrt::ComponentArchive archive = archiveOf(component.zip());
    EXPECT_EQ(archive.manifest().name, "sample");
    EXPECT_EQ(archive.digest(), vrlkrt::sha256Hex(component.zip()));
    EXPECT_EQ(archive.files(),
              (std::map<std::string, std::uint64_t>{{"lib/x.so", tinyLibrary().size()}, {"data/table.txt", 5}}));
}

TEST(ComponentArchive, HasLimits) {
    using Limits = vrlkrt::ArchiveLimits;
    const CraftedComponent component;
    const std::string zip = component.zip();
    const std::uint64_t manifestSize = component.defaultManifest().size();
    const std::uint64_t librarySize = tinyLibrary().size();
    const struct {
        std::uint64_t Limits::*limit;
        std::uint64_t needed;
        const char* failure;  ///< with a limit that is one less
    } table[] = {
        {&Limits::archiveBytes, zip.size(), "bytes, and"},
        {&Limits::entries, 3, "The archive has more than the 2 entries that are allowed."},
        {&Limits::manifestBytes, manifestSize, "'component.json'"},
        {&Limits::fileBytes, librarySize, "Archive entry 'lib/x.so': it has "},
        {&Limits::totalBytes, manifestSize + librarySize + 5, "'data/table.txt': with it"},
    };
    for (const auto& row : table) {
        Limits limits;
        limits.*row.limit = row.needed;
        expectRefusal(zip, "", limits);
        --(limits.*row.limit);
        expectRefusal(zip, row.failure, limits);
    }
}

}  // namespace
