#include "vrlkrt/archive/elfcheck.h"

#include <elf.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>

namespace vrlkrt {
namespace {

/// A file with ways to read it from any place.
struct ElfFile {
    std::uint64_t size;
    std::function<bool(std::uint64_t offset, void* target, std::size_t count)> read;

    bool holds(std::uint64_t offset, std::uint64_t count) const { return offset <= size && count <= size - offset; }
};

struct Machine {
    std::string_view platform;
    unsigned number;
};

/// All of 64 bits and little-endian.
constexpr Machine machines[] = {
    {"linux-x86_64", EM_X86_64}, {"linux-aarch64", EM_AARCH64}, {"linux-riscv64", EM_RISCV}};

std::string identityProblem(const Elf64_Ehdr& header, std::string_view platform) {
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return "is no ELF file";
    }
    for (const Machine& machine : machines) {
        if (machine.platform != platform) {
            continue;
        }
        if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
            header.e_machine != machine.number) {
            return "was built for another platform than " + std::string(platform) + ": its machine is " +
                   std::to_string(header.e_machine);
        }
        if (header.e_type != ET_DYN) {
            return "is no shared object: its type is " + std::to_string(header.e_type);
        }
    }
    return "";
}

std::string cutShort(const char* what) { return std::string("is cut short or damaged: ") + what + " past its end"; }

/// Every part of the file that the loader or a debugger would look at lies within it.
std::string extentProblem(const ElfFile& file, const Elf64_Ehdr& header) {
    const std::uint64_t segmentsBytes = std::uint64_t{header.e_phnum} * sizeof(Elf64_Phdr);
    const std::uint64_t sectionsBytes = std::uint64_t{header.e_shnum} * sizeof(Elf64_Shdr);
    if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_phnum == 0) {
        return "is damaged: it has no segments";
    }
    if (!file.holds(header.e_phoff, segmentsBytes)) {
        return cutShort("its program headers lie");
    }
    if (header.e_shnum != 0 && header.e_shentsize != sizeof(Elf64_Shdr)) {
        return "is damaged: its section headers have another size";
    }
    if (!file.holds(header.e_shoff, sectionsBytes)) {
        return cutShort("its section headers lie");
    }
    bool loads = false;
    for (unsigned number = 0; number < header.e_phnum; ++number) {
        Elf64_Phdr segment{};
        if (!file.read(header.e_phoff + number * sizeof segment, &segment, sizeof segment)) {
            return "can't be read";
        }
        if (!file.holds(segment.p_offset, segment.p_filesz) ||
            (segment.p_type == PT_LOAD && segment.p_filesz > segment.p_memsz)) {
            return cutShort("a segment reaches");
        }
        loads = loads || segment.p_type == PT_LOAD;
    }
    return loads ? "" : "is damaged: it has no segments";
}

std::string problemOf(const ElfFile& file, std::string_view platform) {
    constexpr std::string_view system = "linux-";
    if (platform.substr(0, system.size()) != system) {
        return "";
    }
    Elf64_Ehdr header{};
    if (!file.holds(0, sizeof header) || !file.read(0, &header, sizeof header)) {
        return "is no ELF file";
    }
    std::string problem = identityProblem(header, platform);
    // The headers of 32 bits or of the other byte order look different; none of the known platforms has them.
    const bool known = header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_ident[EI_DATA] == ELFDATA2LSB;
    return problem.empty() && known ? extentProblem(file, header) : problem;
}

}  // namespace

std::string elfProblem(std::string_view file, std::string_view platform) {
    const auto read = [&](std::uint64_t offset, void* target, std::size_t count) {
        std::memcpy(target, file.data() + offset, count);
        return true;
    };
    return problemOf({file.size(), read}, platform);
}

std::string elfProblemOfFile(const std::string& path, std::string_view platform) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (!file || size < 0) {
        return "";
    }
    const auto read = [&](std::uint64_t offset, void* target, std::size_t count) {
        file.seekg(static_cast<std::streamoff>(offset));
        return !file.read(static_cast<char*>(target), static_cast<std::streamsize>(count)).fail();
    };
    return problemOf({static_cast<std::uint64_t>(size), read}, platform);
}

}  // namespace vrlkrt
