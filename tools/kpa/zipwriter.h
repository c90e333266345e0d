#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kpa {

/// A zip file in memory. Entries have no times and no owner and stand in the order of adding, so that the same
/// entries give the same bytes. What it writes is below 4 GiB; more is a std::length_error.
class ZipWriter {
public:
    /// Content is deflated where that makes it smaller.
    void add(std::string_view path, std::string_view content);
    /// Ends the archive; nothing can be added after.
    std::string finish();

private:
    std::string bytes_;
    std::string directory_;
    std::uint16_t entries_ = 0;
};

}  // namespace kpa
