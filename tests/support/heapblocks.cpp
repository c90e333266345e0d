#include "support/heapblocks.h"

#include <cstdlib>
#include <new>

namespace loomkit::test {

thread_local std::size_t heapBlocksGiven = 0;
thread_local std::size_t heapBytesGiven = 0;
thread_local int heapBlocksLeft = -1;

}  // namespace loomkit::test

using namespace loomkit::test;

// All forms belong together, and the compiler must not mix an inlined one with a call of another.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (heapBlocksLeft == 0) {
        return nullptr;
    }
    heapBlocksLeft -= heapBlocksLeft > 0 ? 1 : 0;
    ++heapBlocksGiven;
    heapBytesGiven += size;
    return std::malloc(size == 0 ? 1 : size);
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* block = ::operator new(size, std::nothrow)) {
        return block;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
