#include "support/heapblocks.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SANITIZED 1
#endif
#endif
#ifndef SANITIZED
#define SANITIZED 0
#endif

// The allocator below the functions that this file puts in front of it.
#if SANITIZED
#define BELOW(name) __interceptor_##name
#else
#define BELOW(name) __libc_##name
#endif

extern "C" {
void* BELOW(malloc)(std::size_t);
void* BELOW(calloc)(std::size_t, std::size_t);
void* BELOW(realloc)(void*, std::size_t);
void* BELOW(memalign)(std::size_t, std::size_t);
void BELOW(free)(void*);
}

namespace loomkit::test {

thread_local std::size_t heapBlocksGiven = 0;
thread_local std::size_t heapBytesGiven = 0;
thread_local int heapBlocksLeft = -1;

}  // namespace loomkit::test

namespace {

using namespace loomkit::test;

thread_local HeapWatch* innermost = nullptr;
thread_local HeapLedger* ledgerOfThread = nullptr;

/// Whether an object is the dynamic loader or belongs to the virtual machine, whose libraries lie together.
bool isExempt(std::string_view file) {
    return file.find("/ld-linux") != std::string_view::npos || file.find("/libjvm.so") != std::string_view::npos ||
           (file.find("/jvm/") != std::string_view::npos && file.find("/lib/") != std::string_view::npos);
}

/// Takes memory without being seen.
template <typename T>
struct BelowAllocator {
    using value_type = T;
    BelowAllocator() = default;
    template <typename Other>
    explicit BelowAllocator(const BelowAllocator<Other>&) noexcept {}
    T* allocate(std::size_t count) { return static_cast<T*>(BELOW(malloc)(count * sizeof(T))); }
    void deallocate(T* block, std::size_t) noexcept { BELOW(free)(block); }
    friend bool operator==(const BelowAllocator&, const BelowAllocator&) { return true; }
    friend bool operator!=(const BelowAllocator&, const BelowAllocator&) { return false; }
};

/// What the open ledger remembers: blocks, and the code that asked for them.
struct LedgerEntries {
    std::mutex mutex;
    std::unordered_map<const void*, const void*, std::hash<const void*>, std::equal_to<>,
                       BelowAllocator<std::pair<const void* const, const void*>>>
        callers;
};

std::atomic<bool> ledgerIsOpen{false};

LedgerEntries& ledgerEntries() {
    static LedgerEntries entries;
    return entries;
}

bool isRefused(const void* caller) noexcept {
    if (innermost == nullptr || innermost->admit(caller)) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

/// Passes a block on to the code that asked for it. A sanitizer ends blocks before any code of a program may run, and
/// so before `free` could be told here; it finds lost ones by itself.
void* give(void* block, const void* caller) noexcept {
    if (SANITIZED == 0 && block != nullptr && ledgerOfThread != nullptr) {
        ledgerOfThread->enter(block, caller);
    }
    return block;
}

/// To be told before the block goes: another thread may be given it at once.
void forget(const void* block) noexcept {
    if (SANITIZED == 0 && block != nullptr && ledgerIsOpen) {
        LedgerEntries& entries = ledgerEntries();
        const std::lock_guard<std::mutex> lock(entries.mutex);
        entries.callers.erase(block);
    }
}

void* newBlock(std::size_t size, const void* caller) noexcept {
    if (heapBlocksLeft == 0 || isRefused(caller)) {
        return nullptr;
    }
    heapBlocksLeft -= heapBlocksLeft > 0 ? 1 : 0;
    ++heapBlocksGiven;
    heapBytesGiven += size;
    return give(BELOW(malloc)(size == 0 ? 1 : size), caller);
}

std::string nameOf(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0) {
        return "unknown code";
    }
    if (info.dli_sname == nullptr) {
        const auto offset = static_cast<const char*>(address) - static_cast<const char*>(info.dli_fbase);
        return std::string(info.dli_fname) + " + " + std::to_string(offset);
    }
    const std::unique_ptr<char, decltype(&std::free)> plain(
        abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, nullptr), &std::free);
    return plain ? plain.get() : info.dli_sname;
}

}  // namespace

namespace loomkit::test {

ExemptCode::ExemptCode() noexcept {
    const auto add = [](dl_phdr_info* object, std::size_t, void* self) {
        auto& exempt = *static_cast<ExemptCode*>(self);
        for (int i = 0; isExempt(object->dlpi_name) && i < object->dlpi_phnum; ++i) {
            const auto& segment = object->dlpi_phdr[i];
            const bool isCode = segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0;
            if (isCode && exempt.count_ < exempt.ranges_.size()) {
                const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
                exempt.ranges_[exempt.count_++] = {begin, begin + segment.p_memsz};
            }
        }
        return 0;
    };
    dl_iterate_phdr(add, this);
}

bool ExemptCode::holds(const void* address) const noexcept {
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    return std::any_of(ranges_.begin(), ranges_.begin() + count_,
                       [place](const AddressRange& range) { return range.begin <= place && place < range.end; });
}

HeapWatch::HeapWatch(std::size_t refusedBlock, Refusal refusal) noexcept
    : outer_(innermost), refusedBlock_(refusedBlock), refusal_(refusal) {
    innermost = this;
}

HeapWatch::~HeapWatch() { innermost = outer_; }

bool HeapWatch::admit(const void* caller) noexcept {
    if (exempt_.holds(caller)) {
        return true;
    }
    ++asked_;
    const bool refused =
        refusedBlock_ != 0 && (refusal_ == Refusal::once ? asked_ == refusedBlock_ : asked_ >= refusedBlock_);
    return !refused;
}

HeapLedger::HeapLedger() {
    ledgerIsOpen = true;
    ledgerOfThread = this;
}

HeapLedger::~HeapLedger() {
    ledgerOfThread = nullptr;
    ledgerIsOpen = false;
    LedgerEntries& entries = ledgerEntries();
    const std::lock_guard<std::mutex> lock(entries.mutex);
    entries.callers.clear();
}

std::size_t HeapLedger::held() const {
    LedgerEntries& entries = ledgerEntries();
    const std::lock_guard<std::mutex> lock(entries.mutex);
    return entries.callers.size();
}

std::string HeapLedger::holders() const {
    const HeapPause reading;
    LedgerEntries& entries = ledgerEntries();
    const auto callers = [&] {
        const std::lock_guard<std::mutex> lock(entries.mutex);
        return entries.callers;
    }();
    std::string text;
    for (const auto& entry : callers) {
        text += nameOf(entry.second) + "\n";
    }
    return text;
}

void HeapLedger::enter(const void* block, const void* caller) {
    if (!exempt_.holds(caller)) {
        LedgerEntries& entries = ledgerEntries();
        const std::lock_guard<std::mutex> lock(entries.mutex);
        entries.callers[block] = caller;
    }
}

HeapPause::HeapPause() noexcept
    : watch_(std::exchange(innermost, nullptr)), ledger_(std::exchange(ledgerOfThread, nullptr)) {}

HeapPause::~HeapPause() {
    innermost = watch_;
    ledgerOfThread = ledger_;
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

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

extern "C" {

[[gnu::noinline]] void* malloc(std::size_t size) noexcept {
    return isRefused(CALLER) ? nullptr : give(BELOW(malloc)(size), CALLER);
}

[[gnu::noinline]] void* calloc(std::size_t count, std::size_t size) noexcept {
    return isRefused(CALLER) ? nullptr : give(BELOW(calloc)(count, size), CALLER);
}

/// A size of 0 ends the block.
[[gnu::noinline]] void* realloc(void* block, std::size_t size) noexcept {
    if (size != 0 && isRefused(CALLER)) {
        return nullptr;
    }
    forget(block);
    return give(BELOW(realloc)(block, size), CALLER);
}

[[gnu::noinline]] void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return isRefused(CALLER) ? nullptr : give(BELOW(memalign)(alignment, size), CALLER);
}

[[gnu::noinline]] int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    void* given = isRefused(CALLER) ? nullptr : give(BELOW(memalign)(alignment, size), CALLER);
    if (given == nullptr) {
        return ENOMEM;
    }
    *block = given;
    return 0;
}

#if !SANITIZED
[[gnu::noinline]] void free(void* block) noexcept {
    forget(block);
    BELOW(free)(block);
}
#endif

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
#undef SANITIZED
