#include "zipwriter.h"

#include <archive.h>
#include <archive_entry.h>

#include <stdexcept>

namespace kpa {
namespace {

la_ssize_t append(archive*, void* target, const void* bytes, std::size_t count) {
    static_cast<std::string*>(target)->append(static_cast<const char*>(bytes), count);
    return static_cast<la_ssize_t>(count);
}

}  // namespace

ZipWriter::ZipWriter() : archive_(archive_write_new(), &archive_write_free) {
    if (!archive_) {
        throw std::bad_alloc();
    }
    require(archive_write_set_format_zip(archive_.get()));
    require(archive_write_set_options(archive_.get(), "zip:compression=deflate"));
    require(archive_write_set_bytes_in_last_block(archive_.get(), 1));
    require(archive_write_open(archive_.get(), &bytes_, nullptr, append, nullptr));
}

void ZipWriter::add(const std::string& path, const std::string& content) {
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), &archive_entry_free);
    if (!entry) {
        throw std::bad_alloc();
    }
    archive_entry_set_pathname(entry.get(), path.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), 0644);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
    require(archive_write_header(archive_.get(), entry.get()));
    if (archive_write_data(archive_.get(), content.data(), content.size()) != static_cast<la_ssize_t>(content.size())) {
        require(ARCHIVE_FATAL);
    }
}

std::string ZipWriter::finish() {
    require(archive_write_close(archive_.get()));
    return std::move(bytes_);
}

void ZipWriter::require(int result) const {
    if (result != ARCHIVE_OK) {
        const char* reason = archive_error_string(archive_.get());
        throw std::runtime_error(std::string("can't make the archive: ") + (reason ? reason : "not enough memory"));
    }
}

}  // namespace kpa
