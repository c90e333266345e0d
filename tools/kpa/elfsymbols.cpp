#include "elfsymbols.h"

#include <elf.h>

#include <cstdint>
#include <cstring>
#include <optional>

namespace kpa {
namespace {

/// A part of a file; empty where it is not all there.
std::string_view partOf(std::string_view file, std::uint64_t offset, std::uint64_t count) {
    const bool there = offset <= file.size() && count <= file.size() - offset;
    return there ? file.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(count)) : std::string_view();
}

template <typename Record>
std::optional<Record> recordAt(std::string_view table, std::uint64_t number) {
    const std::string_view bytes = partOf(table, number * sizeof(Record), sizeof(Record));
    Record record{};
    if (bytes.empty()) {
        return std::nullopt;
    }
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

bool isDefinedFunction(const Elf64_Sym& symbol) {
    const unsigned type = ELF64_ST_TYPE(symbol.st_info);
    const unsigned binding = ELF64_ST_BIND(symbol.st_info);
    return symbol.st_shndx != SHN_UNDEF && (binding == STB_GLOBAL || binding == STB_WEAK) &&
           (type == STT_FUNC || type == STT_NOTYPE || type == STT_GNU_IFUNC);
}

void addFunctions(std::set<std::string>& functions, std::string_view symbols, std::string_view names) {
    for (std::uint64_t number = 0;; ++number) {
        const auto symbol = recordAt<Elf64_Sym>(symbols, number);
        if (!symbol) {
            return;
        }
        if (isDefinedFunction(*symbol) && symbol->st_name < names.size()) {
            const std::string_view name = names.substr(symbol->st_name);
            functions.emplace(name.substr(0, name.find('\0')));
        }
    }
}

}  // namespace

std::set<std::string> definedFunctions(std::string_view file) {
    std::set<std::string> functions;
    const auto header = recordAt<Elf64_Ehdr>(file, 0);
    if (!header || header->e_ident[EI_CLASS] != ELFCLASS64 || header->e_ident[EI_DATA] != ELFDATA2LSB) {
        return functions;
    }
    const std::string_view sections =
        partOf(file, header->e_shoff, std::uint64_t{header->e_shnum} * sizeof(Elf64_Shdr));
    for (std::uint64_t number = 0; number < header->e_shnum; ++number) {
        const auto section = recordAt<Elf64_Shdr>(sections, number);
        if (!section || section->sh_type != SHT_DYNSYM) {
            continue;
        }
        if (const auto names = recordAt<Elf64_Shdr>(sections, section->sh_link)) {
            addFunctions(functions, partOf(file, section->sh_offset, section->sh_size),
                         partOf(file, names->sh_offset, names->sh_size));
        }
    }
    return functions;
}

}  // namespace kpa
