#pragma once

#include <sodium/crypto_hash_sha256.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace vrlkrt {

/// SHA-256 of bytes that come in pieces.
class Sha256 {
public:
    Sha256();
    void update(const void* bytes, std::size_t count);
    /// The digest as 64 lower-case hexadecimal digits. Ends the object's use.
    [[nodiscard]] std::string hex();

private:
    crypto_hash_sha256_state state_;
};

[[nodiscard]] std::string sha256Hex(std::string_view bytes);

/// Digest of a file's content; throws vrlBaseException that names the file when it can't be read.
[[nodiscard]] std::string sha256OfFile(const std::string& path);

/// Whether the text has the form that Sha256::hex gives.
[[nodiscard]] bool isSha256Hex(std::string_view text);

}  // namespace vrlkrt
