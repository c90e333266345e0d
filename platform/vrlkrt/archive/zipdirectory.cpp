#include "vrlkrt/archive/zipdirectory.h"

#include "vrlkrt/archive/archivefailure.h"
#include "vrlkrt/archive/zipcursor.h"
#include "vrlkrt/archive/ziprecords.h"

#include <algorithm>

namespace vrlkrt {
namespace {

[[noreturn]] void failDamaged(const std::string& how) {
    failArchive("The archive is truncated or damaged: " + how + ".");
}

/// What the directory and the local header of an entry both hold, in the order of the bytes.
struct Header {
    std::uint32_t version;
    std::uint32_t flags;
    std::uint32_t method;
    std::uint32_t time;
    std::uint32_t crc;
    std::uint32_t packedSize;
    std::uint32_t size;
    std::uint32_t pathLength;
    std::uint32_t extraLength;
};

Header takeHeader(ZipCursor& bytes) {
    Header header{};
    header.version = bytes.take16();
    header.flags = bytes.take16();
    header.method = bytes.take16();
    header.time = bytes.take32();
    header.crc = bytes.take32();
    header.packedSize = bytes.take32();
    header.size = bytes.take32();
    header.pathLength = bytes.take16();
    header.extraLength = bytes.take16();
    return header;
}

/// One record of the directory.
struct DirectoryRecord {
    Header header;
    std::uint32_t commentLength;
    std::uint32_t volume;
    std::uint32_t attributes;
    std::uint32_t offset;  ///< of the local header
    std::string path;
    std::string_view extra;
};

DirectoryRecord takeDirectoryRecord(ZipCursor& directory) {
    if (!directory.startsWith(zip::directorySignature)) {
        failDamaged("its directory has fewer entries than its end record states, or starts elsewhere");
    }
    directory.take(zip::directorySignature.size());
    directory.take16();  // made by: readers differ in what they take from it, so nothing is
    DirectoryRecord record{};
    record.header = takeHeader(directory);
    record.commentLength = directory.take16();
    record.volume = directory.take16();
    directory.take16();  // whether the content is text
    record.attributes = directory.take32();
    record.offset = directory.take32();
    record.path = directory.take(record.header.pathLength);
    record.extra = directory.take(record.header.extraLength);
    return record;
}

/// The attributes may be those of Unix in their upper half, of DOS in their lower; either may tell of something else
/// than a file, whichever system the archive says that it comes from.
void requirePlainFile(const DirectoryRecord& record) {
    enum : std::uint32_t { typeMask = 0170000, file = 0100000, link = 0120000, folder = 0040000 };
    constexpr std::uint32_t dosVolume = 0x08;
    constexpr std::uint32_t dosFolder = 0x10;
    const std::uint32_t type = record.attributes >> 16 & typeMask;
    const bool endsAsFolder = !record.path.empty() && record.path.back() == '/';
    if (type == folder || (record.attributes & dosFolder) != 0 || endsAsFolder) {
        failEntry(record.path, "it is a folder; only files are allowed");
    }
    if (type == link) {
        failEntry(record.path, "it is a link; only files are allowed");
    }
    if ((type != 0 && type != file) || (record.attributes & dosVolume) != 0) {
        failEntry(record.path, "it is a device, pipe or socket; only files are allowed");
    }
}

void requireKnownFeatures(const DirectoryRecord& record) {
    const Header& header = record.header;
    if ((header.flags & zip::flag::encrypted) != 0) {
        failEntry(record.path, "it is encrypted");
    }
    if ((header.flags & ~(zip::flag::deflateEffort | zip::flag::sizesFollow | zip::flag::utf8)) != 0 ||
        header.version > zip::version) {
        failEntry(record.path, "it uses features of zip files that archives do not: version " +
                                   std::to_string(header.version) + ", flags " + std::to_string(header.flags));
    }
    if (header.method != zip::stored && header.method != zip::deflated) {
        failEntry(record.path,
                  "its method is " + std::to_string(header.method) + "; only 0 (stored) and 8 (deflated) are allowed");
    }
    if (header.method == zip::stored && (header.flags & zip::flag::sizesFollow) != 0) {
        failEntry(record.path, "it is stored with its size behind it");
    }
    if (header.method == zip::stored && header.packedSize != header.size) {
        failEntry(record.path, "it has " + std::to_string(header.packedSize) + " stored bytes, not the " +
                                   std::to_string(header.size) + " that it states");
    }
    if (record.commentLength != 0 || record.volume != 0) {
        failEntry(record.path, "it has a comment or lies in another volume");
    }
}

/// Extra fields may tell times and owners, which are not used. Others can name another file or other sizes.
void requireHarmlessExtra(const std::string& path, std::string_view extra) {
    constexpr std::uint32_t times = 0x5455;
    constexpr std::uint32_t owners = 0x7875;
    ZipCursor fields(extra);
    while (fields.left() != 0) {
        constexpr std::size_t headBytes = 4;
        const std::uint32_t kind = fields.left() < headBytes ? 0 : fields.take16();
        const std::uint32_t length = kind == 0 ? 0 : fields.take16();
        if ((kind != times && kind != owners) || length > fields.left()) {
            failEntry(path, "it has an extra field that is not allowed or not whole");
        }
        fields.take(length);
    }
}

/// What a local header may hold in place of the values of the directory.
Header withoutSizes(Header header) {
    header.crc = 0;
    header.packedSize = 0;
    header.size = 0;
    return header;
}

void requireSame(const std::string& path, const Header& local, const Header& directory) {
    const struct {
        const char* words;
        std::uint32_t Header::*field;
    } fields[] = {
        {"version", &Header::version}, {"flags", &Header::flags},  {"method", &Header::method},
        {"time", &Header::time},       {"checksum", &Header::crc}, {"packed size", &Header::packedSize},
        {"size", &Header::size},
    };
    for (const auto& [words, field] : fields) {
        if (local.*field != directory.*field) {
            failEntry(path, std::string("its local header states another ") + words + " than the directory");
        }
    }
}

/// Takes one entry off the archive's front: its local header, its content and what tells its sizes behind it.
std::string_view takeContent(ZipCursor& bytes, const DirectoryRecord& record) {
    const std::string& path = record.path;
    if (!bytes.startsWith(zip::localSignature)) {
        failEntry(path, "it has no local header where the directory says");
    }
    bytes.take(zip::localSignature.size());
    const Header local = takeHeader(bytes);
    const std::string_view localPath = bytes.take(local.pathLength);
    if (localPath != path) {
        failEntry(path, "its local header names it '" + std::string(localPath) + "'");
    }
    requireHarmlessExtra(path, bytes.take(local.extraLength));
    const bool sizesFollow = (record.header.flags & zip::flag::sizesFollow) != 0;
    requireSame(path, local, sizesFollow ? withoutSizes(record.header) : record.header);
    const std::string_view content = bytes.take(record.header.packedSize);
    if (sizesFollow) {
        if (!bytes.startsWith(zip::descriptorSignature)) {
            failEntry(path, "its sizes do not follow its content");
        }
        bytes.take(zip::descriptorSignature.size());
        Header following = record.header;
        following.crc = bytes.take32();
        following.packedSize = bytes.take32();
        following.size = bytes.take32();
        requireSame(path, following, record.header);
    }
    return content;
}

/// What the end record tells of the directory.
struct Extent {
    std::size_t offset;
    std::uint32_t entries;
};

Extent readEndRecord(std::string_view archive) {
    if (archive.empty()) {
        failArchive("The archive is empty.");
    }
    if (archive.substr(0, 2) != zip::localSignature.substr(0, 2)) {
        failArchive("The archive is not a zip file.");
    }
    const std::size_t position = archive.size() - std::min(archive.size(), zip::endRecordBytes);
    ZipCursor end(archive.substr(position));
    if (!end.startsWith(zip::endSignature)) {
        failDamaged("it does not end with the end record of a zip file");
    }
    end.take(zip::endSignature.size());
    const std::uint32_t volumes = end.take16() + end.take16();
    const std::uint32_t entriesHere = end.take16();
    const std::uint32_t entries = end.take16();
    const std::uint64_t size = end.take32();
    const std::uint64_t offset = end.take32();
    if (volumes != 0 || entriesHere != entries || end.take16() != 0) {
        failDamaged("its end record states several volumes or a comment");
    }
    if (offset + size != position) {
        failDamaged("its end record does not follow the directory that it states");
    }
    return {static_cast<std::size_t>(offset), entries};
}

}  // namespace

std::vector<ZipEntry> readZipDirectory(std::string_view archive, std::uint64_t maxEntries) {
    const Extent extent = readEndRecord(archive);
    if (extent.entries > maxEntries) {
        failArchive("The archive has more than the " + std::to_string(maxEntries) + " entries that are allowed.");
    }
    ZipCursor directory(archive.substr(extent.offset, archive.size() - zip::endRecordBytes - extent.offset));
    ZipCursor contents(archive.substr(0, extent.offset));
    std::vector<ZipEntry> entries;
    for (std::uint32_t number = 0; number < extent.entries; ++number) {
        const DirectoryRecord record = takeDirectoryRecord(directory);
        requirePlainFile(record);
        requireKnownFeatures(record);
        requireHarmlessExtra(record.path, record.extra);
        if (record.offset != extent.offset - contents.left()) {
            failEntry(record.path, "it does not begin where the entry before it ends");
        }
        const std::string_view packed = takeContent(contents, record);
        entries.push_back(
            {record.path, packed, record.header.size, record.header.crc, record.header.method == zip::deflated});
    }
    if (contents.left() != 0 || directory.left() != 0) {
        failDamaged("it has bytes that belong to no entry");
    }
    return entries;
}

}  // namespace vrlkrt
