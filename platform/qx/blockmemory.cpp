#include "largeblocks.h"
#include "qx/qx.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#define QX_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_ADDRESS_SANITIZER
#endif
#endif

#ifdef QX_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace {

constexpr std::size_t kAlignment = 64;

/// From this size on calloc is asked for zeros: it knows pages that are fresh from the system.
constexpr std::size_t kCallocFrom = 1024;

/// Stands right in front of every block.
struct BlockHeader {
    std::size_t capacity;  // bytes behind the header
    std::uint32_t offset;  // from the start of the allocation to the block; 0 for a mapping of its own
    std::uint32_t unused;
};
static_assert(sizeof(BlockHeader) == 16 && alignof(std::max_align_t) == 16,
              "an allocation leaves 16 to 64 bytes in front of the next multiple of 64");

BlockHeader* headerOf(void* block) noexcept { return static_cast<BlockHeader*>(block) - 1; }

void* allocateSmall(std::size_t bytes, qxContents contents) noexcept {
    const std::size_t total = bytes + kAlignment;
    const bool callocZeros = contents == qxContents::zeros && bytes >= kCallocFrom;
    void* raw = callocZeros ? std::calloc(1, total) : std::malloc(total);
    if (raw == nullptr) {
        return nullptr;
    }
    const std::size_t offset = kAlignment - reinterpret_cast<std::uintptr_t>(raw) % kAlignment;
    char* block = static_cast<char*>(raw) + offset;
    *headerOf(block) = {bytes, static_cast<std::uint32_t>(offset), 0};
    if (contents == qxContents::zeros && !callocZeros) {
        std::memset(block, 0, bytes);
    }
#ifdef QX_ADDRESS_SANITIZER
    ASAN_POISON_MEMORY_REGION(block + bytes, total - offset - bytes);
#endif
    return block;
}

void* allocateLarge(std::size_t bytes, qxContents contents) noexcept {
    const qx::LargeBlock block = qx::takeLargeBlock(bytes);
    if (block.payload == nullptr) {
        return nullptr;
    }
    *headerOf(block.payload) = {block.capacity, 0, 0};
    if (contents == qxContents::zeros && !block.fresh) {
        std::memset(block.payload, 0, bytes);
    }
    return block.payload;
}

void* allocate(std::size_t bytes, qxContents contents) noexcept {
    if (bytes < qx::kLargeBlock) {
        return allocateSmall(std::max<std::size_t>(bytes, 1), contents);
    }
    return bytes <= qx::memoryBound() ? allocateLarge(bytes, contents) : nullptr;
}

}  // namespace

void* qxMalloc(std::size_t bytes) { return allocate(bytes, qxContents::unset); }

void* qxCalloc(std::size_t count, std::size_t size) {
    std::size_t bytes = 0;
    return __builtin_mul_overflow(count, size, &bytes) ? nullptr : allocate(bytes, qxContents::zeros);
}

void* qxRealloc(void* block, std::size_t bytes) {
    if (block == nullptr) {
        return qxMalloc(bytes);
    }
    const std::size_t capacity = headerOf(block)->capacity;
    const bool staysInPlace = bytes <= capacity && bytes >= capacity / 2;
    if (staysInPlace) {
        return block;
    }
    void* moved = qxMalloc(bytes);
    if (moved != nullptr) {
        std::memcpy(moved, block, std::min(bytes, capacity));
        qxFree(block);
    }
    return moved;
}

void qxFree(void* block) {
    if (block == nullptr) {
        return;
    }
    const BlockHeader header = *headerOf(block);
    if (header.offset == 0) {
        qx::giveBackLargeBlock(block, header.capacity);
    } else {
        std::free(static_cast<char*>(block) - header.offset);
    }
}
