#pragma once

/// The records of a zip file, as far as component archives use them: what the reader and the writer agree on. All
/// numbers are little-endian.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vrlkrt::zip {

constexpr std::string_view localSignature = "PK\3\4";
constexpr std::string_view directorySignature = "PK\1\2";
constexpr std::string_view descriptorSignature = "PK\7\10";
constexpr std::string_view endSignature = "PK\5\6";

constexpr std::size_t endRecordBytes = 22;  ///< with its signature, without a comment

constexpr std::uint32_t stored = 0;
constexpr std::uint32_t deflated = 8;

/// The version of the format that knows all that archives use: folders in paths and deflated content.
constexpr std::uint32_t version = 20;
/// The other half of the field "made by": external attributes hold a mode of Unix.
constexpr std::uint32_t madeByUnix = 3 << 8;

namespace flag {
constexpr std::uint32_t encrypted = 1U << 0;
constexpr std::uint32_t deflateEffort = 3U << 1;
constexpr std::uint32_t sizesFollow = 1U << 3;  ///< the local header has zeros, and a descriptor follows the content
constexpr std::uint32_t utf8 = 1U << 11;
}  // namespace flag

}  // namespace vrlkrt::zip
