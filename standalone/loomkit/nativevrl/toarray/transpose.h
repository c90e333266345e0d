#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// Rows that lie one behind another, written as columns. Elements are moved in square blocks that fit into a few
/// registers where the processor is known to have them, and one by one elsewhere.
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
#ifdef __SSE2__
        const std::size_t blockRows = rows / kSide * kSide;
        const std::size_t blockColumns = columns / kSide * kSide;
        if (far && isLineAligned()) {
            moveBlocks<true>(blockRows, blockColumns);
            _mm_sfence();
        } else {
            moveBlocks<false>(blockRows, blockColumns);
        }
        moveSingly(blockRows, rows, 0, blockColumns);
        moveSingly(0, rows, blockColumns, columns);
#else
        moveSingly(0, rows, 0, columns);
#endif
    }

private:
    void moveSingly(std::size_t row, std::size_t rowsEnd, std::size_t column, std::size_t columnsEnd) const {
        for (; column < columnsEnd; ++column) {
            for (std::size_t i = row; i < rowsEnd; ++i) {
                target[column * stride + i] = source[i * pitch + column];
            }
        }
    }

#ifdef __SSE2__
    static constexpr std::size_t kSide = sizeof(__m128i) / sizeof(Element);
    static constexpr std::size_t kColumnsAhead = 8;

    bool isLineAligned() const {
        return reinterpret_cast<std::uintptr_t>(target) % kCacheLine == 0 && stride * sizeof(Element) % kCacheLine == 0;
    }

    static __m128i mixLow(__m128i a, __m128i b) {
        switch (sizeof(Element)) {
            case 1:
                return _mm_unpacklo_epi8(a, b);
            case 2:
                return _mm_unpacklo_epi16(a, b);
            case 4:
                return _mm_unpacklo_epi32(a, b);
            default:
                return _mm_unpacklo_epi64(a, b);
        }
    }

    static __m128i mixHigh(__m128i a, __m128i b) {
        switch (sizeof(Element)) {
            case 1:
                return _mm_unpackhi_epi8(a, b);
            case 2:
                return _mm_unpackhi_epi16(a, b);
            case 4:
                return _mm_unpackhi_epi32(a, b);
            default:
                return _mm_unpackhi_epi64(a, b);
        }
    }

    /// Rows to columns: each round interleaves the first half of the vectors with the second.
    static void turn(__m128i (&block)[kSide]) {
        for (std::size_t round = 1; round < kSide; round *= 2) {
            __m128i mixed[kSide];
            for (std::size_t i = 0; i < kSide / 2; ++i) {
                mixed[2 * i] = mixLow(block[i], block[i + kSide / 2]);
                mixed[2 * i + 1] = mixHigh(block[i], block[i + kSide / 2]);
            }
            for (std::size_t i = 0; i < kSide; ++i) {
                block[i] = mixed[i];
            }
        }
    }

    template <bool streams>
    void moveBlocks(std::size_t rowsEnd, std::size_t columnsEnd) const {
        for (std::size_t column = 0; column < columnsEnd; column += kSide) {
            if (!streams && far) {
                fetchAhead(column);
            }
            for (std::size_t row = 0; row < rowsEnd; row += kSide) {
                __m128i block[kSide];
                for (std::size_t i = 0; i < kSide; ++i) {
                    block[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + (row + i) * pitch + column));
                }
                turn(block);
                for (std::size_t i = 0; i < kSide; ++i) {
                    auto* to = reinterpret_cast<__m128i*>(target + (column + i) * stride + row);
                    if constexpr (streams) {
                        _mm_stream_si128(to, block[i]);
                    } else {
                        _mm_storeu_si128(to, block[i]);
                    }
                }
            }
        }
    }

    void fetchAhead(std::size_t column) const {
        for (std::size_t ahead = column + kColumnsAhead; ahead < column + kColumnsAhead + kSide; ++ahead) {
            for (std::size_t row = 0; ahead < columns && row < rows; row += kCacheLine / sizeof(Element)) {
                __builtin_prefetch(target + ahead * stride + row, 1);
            }
        }
    }
#endif
};

}  // namespace nativevrl::JConvert
