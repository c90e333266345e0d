#pragma once

#include "layout/squareblock.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// Rows that lie one behind another, written as columns, in square blocks that fit into a few registers.
namespace nativevrl::JConvert {

constexpr std::size_t kCacheLine = 64;

/// A block of this size has left the caches before it is whole.
constexpr std::size_t kFarBytes = std::size_t{16} << 20U;

/// `rows` lines of `columns` elements, `pitch` elements apart, to column-major storage whose columns are `stride`
/// elements apart. The lines of a `far` block are written past the caches where they can be written whole, and fetched
/// ahead of the writes to them where not.
template <typename Element>
struct Transposition {
    const Element* source;
    std::size_t pitch;
    std::size_t rows;
    std::size_t columns;
    Element* target;
    std::size_t stride;
    bool far;

    void run() const {
        const std::size_t blockRows = rows / kSide * kSide;
        const std::size_t blockColumns = columns / kSide * kSide;
        if (kStreams && far && isLineAligned()) {
            moveBlocks<kStreams>(blockRows, blockColumns);
            finishStreams();
        } else {
            moveBlocks<false>(blockRows, blockColumns);
        }
        moveSingly(blockRows, rows, 0, blockColumns);
        moveSingly(0, rows, blockColumns, columns);
    }

private:
    void moveSingly(std::size_t row, std::size_t rowsEnd, std::size_t column, std::size_t columnsEnd) const {
        for (; column < columnsEnd; ++column) {
            for (std::size_t i = row; i < rowsEnd; ++i) {
                target[column * stride + i] = source[i * pitch + column];
            }
        }
    }

    using Block = SquareBlock<Element>;
    static constexpr std::size_t kSide = Block::size;
    static constexpr std::size_t kColumnsAhead = 8;

    bool isLineAligned() const {
        return reinterpret_cast<std::uintptr_t>(target) % kCacheLine == 0 && stride * sizeof(Element) % kCacheLine == 0;
    }

    template <bool streams>
    void moveBlocks(std::size_t rowsEnd, std::size_t columnsEnd) const {
        for (std::size_t column = 0; column < columnsEnd; column += kSide) {
            if (!streams && far) {
                fetchAhead(column);
            }
            for (std::size_t row = 0; row < rowsEnd; row += kSide) {
                Block block;
                block.load(source + row * pitch + column, pitch);
                block.transpose();
                Element* to = target + column * stride + row;
                if constexpr (streams) {
                    streamBlock(block, to);
                } else {
                    block.store(to, stride);
                }
            }
        }
    }

#ifdef __SSE2__
    static constexpr bool kStreams = true;

    void streamBlock(const Block& block, Element* to) const {
        for (std::size_t i = 0; i < kSide; ++i) {
            __m128i line;
            std::memcpy(&line, &block.lines[i], sizeof line);
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + i * stride), line);
        }
    }

    static void finishStreams() { _mm_sfence(); }
#else
    static constexpr bool kStreams = false;

    static void finishStreams() {}
#endif

    void fetchAhead(std::size_t column) const {
        for (std::size_t ahead = column + kColumnsAhead; ahead < column + kColumnsAhead + kSide; ++ahead) {
            for (std::size_t row = 0; ahead < columns && row < rows; row += kCacheLine / sizeof(Element)) {
                __builtin_prefetch(target + ahead * stride + row, 1);
            }
        }
    }
};

}  // namespace nativevrl::JConvert
