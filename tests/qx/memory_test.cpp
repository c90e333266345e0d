#include "support.h"

#include <algorithm>
#include <limits>

namespace {

using Memory = RandomQxTest;

constexpr std::size_t kMega = std::size_t{1} << 20U;
constexpr std::size_t kSizes[] = {0, 1, 8, 63, 64, 65, 1000, 1024, 5000, kMega, 4 * kMega - 1, 4 * kMega, 9 * kMega};

TEST_F(Memory, IsRefusedBeyondWhatTheMachineHas) {
    EXPECT_EQ(qxMalloc(std::size_t{1} << 50U), nullptr);
    EXPECT_EQ(qxCalloc(std::size_t{1} << 40U, std::size_t{1} << 40U), nullptr);
    EXPECT_EQ(qxCalloc(std::numeric_limits<std::size_t>::max(), 1), nullptr);
    EXPECT_EQ(qxMalloc(std::numeric_limits<std::size_t>::max()), nullptr);
    auto* block = static_cast<char*>(qxRealloc(nullptr, 10));
    ASSERT_NE(block, nullptr);
    std::strcpy(block, "kept");
    EXPECT_EQ(qxRealloc(block, std::size_t{1} << 50U), nullptr);
    EXPECT_STREQ(block, "kept");
    qxFree(block);
}

TEST_F(Memory, OfTheLargeBlockGivenBackLastIsUsedFirst) {
    void* blocks[3];
    for (void*& block : blocks) {
        block = qxMalloc(7 * kMega);
    }
    std::for_each(std::begin(blocks), std::end(blocks), qxFree);
    void* again = qxMalloc(7 * kMega);
    EXPECT_EQ(again, blocks[2]) << "the others may have left the caches";
    qxFree(again);
}

struct Block {
    unsigned char* begin = nullptr;
    std::size_t bytes = 0;
    unsigned char mark = 0;  ///< what every byte holds
};

void expectMarked(const Block& block, std::size_t bytes) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.begin) % 64, 0U) << bytes;
    const bool isMarked =
        bytes == 0 || (block.begin[0] == block.mark && std::memcmp(block.begin, block.begin + 1, bytes - 1) == 0);
    EXPECT_TRUE(isMarked) << bytes << " of " << block.bytes;
}

TEST_F(Memory, IsAlignedZeroedAndKeepsItsContents) {
    Block blocks[24];
    forRounds(400, [&] {
        Block& block = blocks[random_() % std::size(blocks)];
        const std::size_t bytes = kSizes[random_() % std::size(kSizes)] + (random_() % 8);
        if (random_() % 2 == 0) {
            const std::size_t kept = std::min(block.bytes, bytes);
            block.begin = static_cast<unsigned char*>(qxRealloc(block.begin, bytes));
            expectMarked(block, kept);
        } else {
            expectMarked(block, block.bytes);
            qxFree(block.begin);
            block = {static_cast<unsigned char*>(qxCalloc(bytes, 1)), bytes, 0};
            expectMarked(block, bytes);
        }
        ASSERT_NE(block.begin, nullptr);
        block.bytes = bytes;
        block.mark = static_cast<unsigned char>(random_());
        std::memset(block.begin, block.mark, bytes);
    });
    for (const Block& block : blocks) {
        expectMarked(block, block.bytes);
        qxFree(block.begin);
    }
}

}  // namespace
