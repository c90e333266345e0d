#pragma once

#include "vrlkrt/archive/archivefailure.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vrlkrt {

/// Takes numbers and texts off the front of the bytes of a zip archive. Taking more than is left refuses the archive.
class ZipCursor {
public:
    explicit ZipCursor(std::string_view bytes) noexcept : bytes_(bytes) {}

    std::string_view take(std::uint64_t count) {
        if (count > bytes_.size()) {
            failArchive("The archive is truncated or damaged: a record or a content runs past its end.");
        }
        const std::string_view taken = bytes_.substr(0, static_cast<std::size_t>(count));
        bytes_.remove_prefix(taken.size());
        return taken;
    }
    std::uint32_t take16() { return number(2); }
    std::uint32_t take32() { return number(4); }

    bool startsWith(std::string_view text) const noexcept { return bytes_.substr(0, text.size()) == text; }
    std::size_t left() const noexcept { return bytes_.size(); }

private:
    std::uint32_t number(std::size_t bytes) {
        std::uint32_t value = 0;
        unsigned shift = 0;
        for (const char byte : take(bytes)) {
            value |= std::uint32_t{static_cast<unsigned char>(byte)} << shift;
            shift += 8;
        }
        return value;
    }

    std::string_view bytes_;
};

}  // namespace vrlkrt
