#pragma once

#include <cstddef>

/// What operator new gives to the calling thread, in a program that is linked with heapblocks.cpp.
namespace loomkit::test {

/// Blocks that this thread was given so far, from the program and from every library in it, and their bytes.
extern thread_local std::size_t heapBlocksGiven;
extern thread_local std::size_t heapBytesGiven;

/// How many more blocks this thread gets; any number while it is negative.
extern thread_local int heapBlocksLeft;

}  // namespace loomkit::test
