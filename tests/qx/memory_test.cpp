#include "support.h"

#include <algorithm>
#include <limits>

namespace {

using Memory = QxTest;

constexpr std::size_t kMega = std::size_t{1} << 20U;
constexpr std::size_t kSizes[] = {0, 1, 8, 63, 64, 65, 1000, 1024, 5000, kMega, 4 * kMega - 1, 4 * kMega, 9 * kMega};

bool isZero(const void* block, std::size_t bytes) {
    const auto* begin = static_cast<const unsigned char*>(block);
    return std::all_of(begin, begin + bytes, [](unsigned char byte) { return byte == 0; });
}

TEST_F(Memory, IsAlignedAndZeroedAlsoWhenUsedBefore) {
    for (int round = 0; round < 3; ++round) {
        for (const std::size_t bytes : kSizes) {
            void* block = qxCalloc(bytes, 1);
            ASSERT_NE(block, nullptr) << bytes;
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U) << bytes;
            EXPECT_TRUE(isZero(block, bytes)) << bytes;
            std::memset(block, 0xAB, bytes);
            qxFree(block);
        }
    }
}

TEST_F(Memory, KeepsItsContentsWhenItMoves) {
    for (const std::size_t from : kSizes) {
        for (const std::size_t to : kSizes) {
            auto* block = static_cast<unsigned char*>(qxMalloc(from));
            for (std::size_t i = 0; i < from; i += 97) {
                block[i] = static_cast<unsigned char>(i * 7);
            }
            block = static_cast<unsigned char*>(qxRealloc(block, to));
            ASSERT_NE(block, nullptr) << from << " to " << to;
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
            for (std::size_t i = 0; i < std::min(from, to); i += 97) {
                ASSERT_EQ(block[i], static_cast<unsigned char>(i * 7)) << from << " to " << to << " at " << i;
            }
            std::memset(block, 1, to);
            qxFree(block);
        }
    }
}

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

TEST_F(Memory, OfManyLargeBlocksDoesNotMixThemUp) {
    std::vector<unsigned char*> blocks;
    for (std::size_t i = 0; i < 12; ++i) {
        blocks.push_back(static_cast<unsigned char*>(qxCalloc(5 * kMega + i, 1)));
        ASSERT_TRUE(isZero(blocks.back(), 5 * kMega + i));
        std::memset(blocks.back(), static_cast<int>(i + 1), 5 * kMega + i);
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(blocks[i][0], i + 1);
        EXPECT_EQ(blocks[i][5 * kMega + i - 1], i + 1);
        qxFree(blocks[i]);
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        blocks[i] = static_cast<unsigned char*>(qxCalloc(6 * kMega, 1));
        EXPECT_TRUE(isZero(blocks[i], 6 * kMega));
    }
    std::for_each(blocks.begin(), blocks.end(), qxFree);
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

}  // namespace
