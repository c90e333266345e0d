#include "craftedzip.h"

#include "vrlkrt/archive/digest.h"
#include "vrlkrt/archive/manifest.h"

#include "krt/component.h"

#include <elf.h>
#include <zlib.h>

#include <cstring>
#include <stdexcept>

namespace {

std::uint32_t crcOf(const std::string& bytes) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

/// What the local header and the one of the central directory have in common, after their version fields.
std::string commonFields(const CraftedEntry& entry, const std::string& path) {
    constexpr std::size_t midnightOfFirstJanuary1980 = 0x00210000;
    return bytesOf(entry.flags, 2) + bytesOf(entry.method, 2) + bytesOf(midnightOfFirstJanuary1980, 4) +
           bytesOf(entry.statedCrc.value_or(crcOf(entry.content)), 4) + bytesOf(entry.content.size(), 4) +
           bytesOf(entry.statedSize.value_or(static_cast<std::uint32_t>(entry.content.size())), 4) +
           bytesOf(path.size(), 2) + bytesOf(entry.extra.size(), 2);
}

}  // namespace

std::string bytesOf(std::uint64_t value, std::size_t count) {
    std::string bytes;
    for (std::size_t byte = 0; byte < count; ++byte) {
        bytes += static_cast<char>(value >> (8 * byte) & 0xFF);
    }
    return bytes;
}

std::string deflated(const std::string& content) {
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) {
        throw std::runtime_error("can't deflate");
    }
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::string patched(std::string zip, const std::string& signature, std::size_t offset, const std::string& bytes) {
    return zip.replace(zip.rfind(signature) + offset, bytes.size(), bytes);
}

std::string craftZip(const std::vector<CraftedEntry>& entries) {
    constexpr std::size_t version = 20;
    constexpr std::size_t madeByUnix = 3 << 8 | version;
    std::string zip;
    std::string directory;
    for (const CraftedEntry& entry : entries) {
        zip += entry.before;
        directory += "PK\1\2" + bytesOf(madeByUnix, 2) + bytesOf(version, 2) + commonFields(entry, entry.path) +
                     bytesOf(0, 6) + bytesOf(std::uint64_t{entry.unixMode} << 16, 4) + bytesOf(zip.size(), 4) +
                     entry.path + entry.extra;
        const std::string& localPath = entry.localPath.empty() ? entry.path : entry.localPath;
        zip += "PK\3\4" + bytesOf(version, 2) + commonFields(entry, localPath) + localPath + entry.extra +
               entry.content + entry.after;
    }
    const std::string end = "PK\5\6" + bytesOf(0, 4) + bytesOf(entries.size(), 2) + bytesOf(entries.size(), 2) +
                            bytesOf(directory.size(), 4) + bytesOf(zip.size(), 4) + bytesOf(0, 2);
    return zip + directory + end;
}

std::string tinyLibrary() {
    Elf64_Ehdr header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = ELFCLASS64;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_type = ET_DYN;
#if defined(__aarch64__)
    header.e_machine = EM_AARCH64;
#else
    header.e_machine = EM_X86_64;
#endif
    header.e_phoff = sizeof header;
    header.e_phentsize = sizeof(Elf64_Phdr);
    header.e_phnum = 1;
    Elf64_Phdr segment{};
    segment.p_type = PT_LOAD;
    segment.p_filesz = sizeof header + sizeof segment;
    segment.p_memsz = segment.p_filesz;
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) +
           std::string(reinterpret_cast<const char*>(&segment), sizeof segment);
}

std::string CraftedComponent::defaultManifest() const {
    vrlkrt::Manifest made;
    made.name = name;
    made.version = "1.2.3";
    made.abi = KRT_ABI;
    made.functions.push_back({function, function, "does something", {}, {}, {}});
    made.libraries[vrlkrt::hostPlatform()] = "lib/x.so";
    for (const CraftedEntry& file : files) {
        made.digests[file.path] = vrlkrt::sha256Hex(file.content);
    }
    return vrlkrt::manifestText(made);
}

std::string CraftedComponent::zip() const {
    std::vector<CraftedEntry> entries{{vrlkrt::manifestEntry, manifest.empty() ? defaultManifest() : manifest}};
    entries.insert(entries.end(), files.begin(), files.end());
    return craftZip(entries);
}

CraftedComponent otherVersion() {
    CraftedComponent other;
    other.files = {{"lib/x.so", "another library"}, {"new.txt", "new"}};
    return other;
}
