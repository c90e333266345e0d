#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// Running out of memory on purpose, in a program that is linked with heapblocks.cpp.
namespace loomkit::test {

/// Blocks of operator new that this thread was given so far, from the program and from every library in it, and their
/// bytes.
extern thread_local std::size_t heapBlocksGiven;
extern thread_local std::size_t heapBytesGiven;

/// How many more blocks of operator new this thread gets; any number while it is negative.
extern thread_local int heapBlocksLeft;

/// The code whose blocks are its own affair: that of the virtual machine and of the dynamic loader, which would end the
/// process without them.
class ExemptCode {
public:
    /// As it lies in the process now.
    ExemptCode() noexcept;

    bool holds(const void* address) const noexcept;

private:
    struct AddressRange {
        std::uintptr_t begin;
        std::uintptr_t end;
    };

    std::array<AddressRange, 64> ranges_{};
    std::size_t count_ = 0;
};

enum class Refusal { once, fromThereOn };

/// Counts the blocks that the calling thread asks for while it lives, and refuses some if told so: blocks of operator
/// new, malloc, calloc, realloc, posix_memalign, aligned_alloc and mmap, for the program and for every library in it.
/// What exempt code asks for isn't counted and never refused. Watches of one thread nest; the innermost one counts.
class HeapWatch {
public:
    HeapWatch() noexcept : HeapWatch(0, Refusal::once) {}

    /// Refuses the block with this number, 1 being the first, or none for 0.
    HeapWatch(std::size_t refusedBlock, Refusal refusal) noexcept;
    ~HeapWatch();
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;

    std::size_t asked() const noexcept { return asked_; }
    bool hasRefused() const noexcept { return refusedBlock_ != 0 && asked_ >= refusedBlock_; }

    /// Counts one block for the code at `caller`; whether the block may be given.
    bool admit(const void* caller) noexcept;

private:
    HeapWatch* outer_;
    std::size_t refusedBlock_;
    Refusal refusal_;
    std::size_t asked_ = 0;
    ExemptCode exempt_;
};

/// Remembers the blocks that the calling thread is given while it lives, but for mappings and what exempt code asks
/// for, until any thread ends them. One at a time in a process.
class HeapLedger {
public:
    HeapLedger();
    ~HeapLedger();
    HeapLedger(const HeapLedger&) = delete;
    HeapLedger& operator=(const HeapLedger&) = delete;

    /// Blocks that nobody has ended.
    std::size_t held() const;

    /// The code that asked for them, one function a line.
    std::string holders() const;

    /// For the allocator: a block that the calling thread was given, for the code at `caller`.
    void enter(const void* block, const void* caller);

private:
    ExemptCode exempt_;
};

/// While it lives, no watch of the thread counts or refuses a block, and no ledger remembers one: for what runs inside
/// of the watched code and is not the affair of the watch, such as a call into the virtual machine.
class HeapPause {
public:
    HeapPause() noexcept;
    ~HeapPause();
    HeapPause(const HeapPause&) = delete;
    HeapPause& operator=(const HeapPause&) = delete;

private:
    HeapWatch* watch_;
    HeapLedger* ledger_;
};

/// Runs `operation` again and again, with its first, its second, … block refused, until it runs undisturbed. Each time,
/// with the heap whole again, `check(number)` looks at what came of it; the number of the refused block is 0 in the
/// undisturbed run. Returns how many blocks were refused. What an operation sets up once for the process should be
/// there before.
template <typename Operation, typename Check>
std::size_t refuseEachBlock(Refusal refusal, const Operation& operation, const Check& check) {
    for (std::size_t number = 1;; ++number) {
        bool refused = false;
        {
            const HeapWatch watch(number, refusal);
            operation();
            refused = watch.hasRefused();
        }
        check(refused ? number : 0);
        if (!refused) {
            return number - 1;
        }
    }
}

}  // namespace loomkit::test
