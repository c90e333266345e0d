#include "largeblocks.h"

#include <sys/mman.h>
#include <sys/sysinfo.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <mutex>

namespace qx {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20U;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kKeptBlocks = 8;
constexpr std::size_t kKeptBytes = std::size_t{256} << 20U;

void unmap(void* payload, std::size_t capacity) noexcept {
    munmap(static_cast<char*>(payload) - kLargeBlockFront, kLargeBlockFront + capacity);
}

/// Blocks that were given back, oldest first.
class KeptBlocks {
public:
    /// The smallest block that holds `bytes` without wasting more than half of itself, the one given back last where
    /// several do, since it may still be in a cache; a null payload if there is none.
    LargeBlock take(std::size_t bytes) noexcept {
        const std::lock_guard<std::mutex> hold(mutex_);
        std::size_t best = count_;
        for (std::size_t i = 0; i < count_; ++i) {
            const bool fits = blocks_[i].capacity >= bytes && blocks_[i].capacity / 2 <= bytes;
            if (fits && (best == count_ || blocks_[i].capacity <= blocks_[best].capacity)) {
                best = i;
            }
        }
        return best == count_ ? LargeBlock{} : removeAt(best);
    }

    void keep(void* payload, std::size_t capacity) noexcept {
        if (capacity > kKeptBytes) {
            unmap(payload, capacity);
            return;
        }
        const std::lock_guard<std::mutex> hold(mutex_);
        while (count_ == kKeptBlocks || bytes_ + capacity > kKeptBytes) {
            const LargeBlock oldest = removeAt(0);
            unmap(oldest.payload, oldest.capacity);
        }
        blocks_[count_++] = {payload, capacity, false};
        bytes_ += capacity;
    }

    /// Returns whether there was anything to give back to the system.
    bool drop() noexcept {
        const std::lock_guard<std::mutex> hold(mutex_);
        const bool any = count_ != 0;
        while (count_ != 0) {
            const LargeBlock last = removeAt(count_ - 1);
            unmap(last.payload, last.capacity);
        }
        return any;
    }

private:
    LargeBlock removeAt(std::size_t at) noexcept {
        const LargeBlock block = blocks_[at];
        std::copy(blocks_ + at + 1, blocks_ + count_, blocks_ + at);
        --count_;
        bytes_ -= block.capacity;
        return block;
    }

    std::mutex mutex_;
    LargeBlock blocks_[kKeptBlocks];
    std::size_t count_ = 0;
    std::size_t bytes_ = 0;
};

KeptBlocks keptBlocks;

/// Maps a payload on a huge page boundary with one page in front, and returns the rest of the reservation.
void* mapAligned(std::size_t capacity) noexcept {
    const std::size_t reserved = kLargeBlockFront + capacity + kHugePage;
    void* base = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base == MAP_FAILED) {
        return nullptr;
    }
    char* begin = static_cast<char*>(base);
    const auto address = reinterpret_cast<std::uintptr_t>(begin) + kLargeBlockFront;
    char* payload = begin + kLargeBlockFront + ((kHugePage - address % kHugePage) % kHugePage);
    const auto before = static_cast<std::size_t>(payload - kLargeBlockFront - begin);
    const std::size_t behind = reserved - before - kLargeBlockFront - capacity;
    if (before != 0) {
        munmap(begin, before);
    }
    if (behind != 0) {
        munmap(payload + capacity, behind);
    }
    madvise(payload, capacity, MADV_HUGEPAGE);
    return payload;
}

}  // namespace

LargeBlock takeLargeBlock(std::size_t bytes) noexcept {
    LargeBlock block = keptBlocks.take(bytes);
    if (block.payload != nullptr) {
        return block;
    }
    const std::size_t capacity = (bytes + kPage - 1) / kPage * kPage;
    void* payload = mapAligned(capacity);
    if (payload == nullptr && keptBlocks.drop()) {
        payload = mapAligned(capacity);
    }
    return {payload, payload == nullptr ? 0 : capacity, true};
}

void giveBackLargeBlock(void* payload, std::size_t capacity) noexcept { keptBlocks.keep(payload, capacity); }

std::size_t memoryBound() noexcept {
    static const std::size_t bound = [] {
        struct sysinfo info = {};
        return sysinfo(&info) == 0 ? (info.totalram + info.totalswap) * info.mem_unit
                                   : std::numeric_limits<std::size_t>::max() / 2;
    }();
    return bound;
}

}  // namespace qx
