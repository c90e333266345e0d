#pragma once

#include "layout/rowbuffer.h"
#include "layout/squareblock.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// Rows that lie one behind another, written as columns, in square blocks that fit into a few registers.
namespace nativevrl::JConvert {

/// A block of this size has left the caches before it is whole.
constexpr std::size_t farBytes = std::size_t{16} << 20U;

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
        const std::size_t blockRows = rows / side * side;
        const std::size_t blockColumns = columns / side * side;
        if (canStream && far && isLineAligned()) {
            moveBlocks<canStream>(blockRows, blockColumns);
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
    static constexpr std::size_t side = Block::size;
    static_assert(cacheLine % sizeof(Block::lines[0]) == 0);
    static constexpr std::size_t columnsAhead = 8;

    bool isLineAligned() const {
        return reinterpret_cast<std::uintptr_t>(target) % cacheLine == 0 && stride * sizeof(Element) % cacheLine == 0;
    }

    template <bool streams>
    void moveBlocks(std::size_t rowsEnd, std::size_t columnsEnd) const {
        for (std::size_t column = 0; column < columnsEnd; column += side) {
            if (!streams && far) {
                fetchAhead(column);
            }
            for (std::size_t row = 0; row < rowsEnd; row += side) {
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
    static constexpr bool canStream = true;

    void streamBlock(const Block& block, Element* to) const {
        for (std::size_t i = 0; i < side; ++i) {
            __m128i line;
            std::memcpy(&line, &block.lines[i], sizeof line);
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + i * stride), line);
        }
    }

    static void finishStreams() { _mm_sfence(); }
#else
    static constexpr bool canStream = false;

    static void finishStreams() {}
#endif

    void fetchAhead(std::size_t column) const {
        for (std::size_t ahead = column + columnsAhead; ahead < column + columnsAhead + side; ++ahead) {
            for (std::size_t row = 0; ahead < columns && row < rows; row += cacheLine / sizeof(Element)) {
                __builtin_prefetch(target + ahead * stride + row, 1);
            }
        }
    }
};

}  // namespace nativevrl::JConvert
