#include "support/heapblocks.h"

#include <link.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

// The allocator below the functions that this file puts in front of it.
#if defined(__SANITIZE_ADDRESS__)
#define BELOW(name) __interceptor_##name
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BELOW(name) __interceptor_##name
#endif
#endif
#ifndef BELOW
#define BELOW(name) __libc_##name
#endif

extern "C" {
void* BELOW(malloc)(std::size_t);
void* BELOW(calloc)(std::size_t, std::size_t);
void* BELOW(realloc)(void*, std::size_t);
void* BELOW(memalign)(std::size_t, std::size_t);
}

namespace loomkit::test {

thread_local std::size_t heapBlocksGiven = 0;
thread_local std::size_t heapBytesGiven = 0;
thread_local long heapBlocksHeld = 0;
thread_local int heapBlocksLeft = -1;

}  // namespace loomkit::test

namespace {

using namespace loomkit::test;

thread_local HeapWatch* innermost = nullptr;

/// Whether an object is the dynamic loader or belongs to the virtual machine, whose libraries lie together.
bool isExempt(std::string_view file) {
    return file.find("/ld-linux") != std::string_view::npos || file.find("/libjvm.so") != std::string_view::npos ||
           (file.find("/jvm/") != std::string_view::npos && file.find("/lib/") != std::string_view::npos);
}

bool isRefused(const void* caller) noexcept {
    if (innermost == nullptr || innermost->admit(caller)) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

void* newBlock(std::size_t size, const void* caller) noexcept {
    if (heapBlocksLeft == 0 || isRefused(caller)) {
        return nullptr;
    }
    heapBlocksLeft -= heapBlocksLeft > 0 ? 1 : 0;
    ++heapBlocksGiven;
    heapBytesGiven += size;
    void* block = BELOW(malloc)(size == 0 ? 1 : size);
    heapBlocksHeld += block == nullptr ? 0 : 1;
    return block;
}

void endBlock(void* block) noexcept {
    heapBlocksHeld -= block == nullptr ? 0 : 1;
    std::free(block);
}

}  // namespace

namespace loomkit::test {

HeapWatch::HeapWatch(std::size_t refusedBlock, Refusal refusal) noexcept
    : outer_(innermost), refusedBlock_(refusedBlock), refusal_(refusal) {
    findExemptCode();
    innermost = this;
}

HeapWatch::~HeapWatch() { innermost = outer_; }

HeapPause::HeapPause() noexcept : watch_(std::exchange(innermost, nullptr)) {}

HeapPause::~HeapPause() { innermost = watch_; }

void HeapWatch::findExemptCode() noexcept {
    const auto add = [](dl_phdr_info* object, std::size_t, void* self) {
        auto& watch = *static_cast<HeapWatch*>(self);
        for (int i = 0; isExempt(object->dlpi_name) && i < object->dlpi_phnum; ++i) {
            const auto& segment = object->dlpi_phdr[i];
            const bool isCode = segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0;
            if (isCode && watch.exemptCount_ < watch.exempt_.size()) {
                const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
                watch.exempt_[watch.exemptCount_++] = {begin, begin + segment.p_memsz};
            }
        }
        return 0;
    };
    dl_iterate_phdr(add, this);
}

bool HeapWatch::admit(const void* caller) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    const auto holdsCaller = [&](const AddressRange& range) { return range.begin <= address && address < range.end; };
    if (std::any_of(exempt_.begin(), exempt_.begin() + exemptCount_, holdsCaller)) {
        return true;
    }
    ++asked_;
    const bool refused =
        refusedBlock_ != 0 && (refusal_ == Refusal::once ? asked_ == refusedBlock_ : asked_ >= refusedBlock_);
    return !refused;
}

}  // namespace loomkit::test

#define CALLER __builtin_return_address(0)

// All forms belong together, and the compiler must not mix an inlined one with a call of another.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return newBlock(size, CALLER);
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* block = newBlock(size, CALLER)) {
        return block;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept { endBlock(block); }
[[gnu::noinline]] void operator delete(void* block, const std::nothrow_t&) noexcept { endBlock(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { endBlock(block); }

extern "C" {

[[gnu::noinline]] void* malloc(std::size_t size) noexcept { return isRefused(CALLER) ? nullptr : BELOW(malloc)(size); }

[[gnu::noinline]] void* calloc(std::size_t count, std::size_t size) noexcept {
    return isRefused(CALLER) ? nullptr : BELOW(calloc)(count, size);
}

/// A size of 0 ends the block.
[[gnu::noinline]] void* realloc(void* block, std::size_t size) noexcept {
    return size != 0 && isRefused(CALLER) ? nullptr : BELOW(realloc)(block, size);
}

[[gnu::noinline]] void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return isRefused(CALLER) ? nullptr : BELOW(memalign)(alignment, size);
}

[[gnu::noinline]] int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    void* given = isRefused(CALLER) ? nullptr : BELOW(memalign)(alignment, size);
    if (given == nullptr) {
        return ENOMEM;
    }
    *block = given;
    return 0;
}

[[gnu::noinline]] void* mmap(void* place, std::size_t bytes, int protection, int flags, int file,
                             off_t offset) noexcept {
    if (isRefused(CALLER)) {
        return MAP_FAILED;
    }
    return reinterpret_cast<void*>(syscall(SYS_mmap, place, bytes, protection, flags, file, offset));
}

}  // extern "C"

#undef CALLER
#undef BELOW
