#pragma once

#include <memory>
#include <string>

struct archive;

namespace kpa {

/// A zip file in memory. Entries have no times and no owner and stand in the order of adding, so that the same
/// entries give the same bytes.
class ZipWriter {
public:
    ZipWriter();
    void add(const std::string& path, const std::string& content);
    /// Ends the archive; nothing can be added after.
    std::string finish();

private:
    void require(int result) const;

    std::string bytes_;
    std::unique_ptr<archive, int (*)(archive*)> archive_;
};

}  // namespace kpa
