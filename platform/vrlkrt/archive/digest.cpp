#include "vrlkrt/archive/digest.h"

#include "vrlbase/exceptions.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace vrlkrt {

Sha256::Sha256() { crypto_hash_sha256_init(&state_); }

void Sha256::update(const void* bytes, std::size_t count) {
    crypto_hash_sha256_update(&state_, static_cast<const unsigned char*>(bytes), count);
}

std::string Sha256::hex() {
    std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
    crypto_hash_sha256_final(&state_, digest.data());
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * digest.size());
    for (const unsigned char byte : digest) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::string sha256Hex(std::string_view bytes) {
    Sha256 digest;
    digest.update(bytes.data(), bytes.size());
    return digest.hex();
}

std::string sha256OfFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    if (!file) {
        throw Norvane::vrl::vrlBaseException("Can't read " + path + ": " + std::strerror(errno) + ".");
    }
    Sha256 digest;
    std::array<char, 65536> block{};
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) != 0) {
        digest.update(block.data(), count);
    }
    if (std::ferror(file.get()) != 0) {
        throw Norvane::vrl::vrlBaseException("Can't read " + path + ": " + std::strerror(errno) + ".");
    }
    return digest.hex();
}

bool isSha256Hex(std::string_view text) {
    return text.size() == 2 * crypto_hash_sha256_BYTES && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

}  // namespace vrlkrt
