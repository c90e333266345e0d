#pragma once

#include "proxies/javalength.h"
#include "proxies/jobjectarrayproxy.h"
#include "toarray/leveltable.h"
#include "tojava/elementreader.h"
#include "tojava/leaves.h"
#include "tojava/tile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <string>

namespace nativevrl {

/// A new array of `length` nulls whose elements are arrays of `depth` levels, rows of Leaf among them counted as one.
template <typename Leaf>
NewJObjectArrayProxy<JObjectProxy> newNesting(JNIEnv* env, std::size_t depth, std::size_t length) {
    const std::string elementClass = std::string(depth - 1, '[') + Leaf::className();
    return {env, elementClass.c_str(), javaLength(env, length)};
}

/// Builds the nested Java array of dense elements: one level of arrays for each entry of the level table, outermost
/// first, and rows of Leaf at the innermost. Element [i][j]... is the one at i and j times their levels' strides.
///
/// Rows whose elements lie apart are gathered through a tile, several at a time; a gathered row goes to Java in one
/// call, as a contiguous one does. The source is borrowed and must not change.
template <typename Leaf>
class NestedWalk {
    using T = typename Leaf::Element;

public:
    NestedWalk(JNIEnv* env, const ElementReader<T>& reader) : env_(env), reader_(reader) {}

    /// The array of `count` levels, one at least, over the elements from `base` on. A local reference of the caller.
    jobject build(const void* base, const LevelExtent* levels, std::size_t count) {
        if (count < 2) {
            return buildLine(base, *levels);
        }
        auto outer = newNesting<Leaf>(env_, count - 1, levels->size);
        if (count == 2) {
            fillMatrix(outer, base, levels[0], levels[1]);
        } else if (!fillCompacted(outer, base, levels, count)) {
            JObjectRef element(env_, nullptr);
            for (unsigned i = 0; i < levels->size; ++i) {
                element.attach(build(elementAt(base, std::size_t{i} * levels->stride), levels + 1, count - 1));
                outer.set(static_cast<jsize>(i), element.ref());
            }
        }
        return outer.detach();
    }

    /// One row of `line.size` elements.
    jobject buildLine(const void* base, const LevelExtent& line) { return buildRun(base, line.stride, line.size); }

    /// One row of `length` elements that lie `stride` apart.
    jobject buildRun(const void* base, std::size_t stride, std::size_t length) {
        Leaf leaf(env_, length);
        if (isReady(stride) || length == 0) {
            leaf.write(0, static_cast<const T*>(base), length);
            return leaf.detach();
        }
        for (std::size_t at = 0; at < length; at += Tile<T>::kSmallest) {
            const std::size_t count = std::min(Tile<T>::kSmallest, length - at);
            reader_.gather(elementAt(base, at * stride), {1, count, 0, stride, count}, tile_.data());
            leaf.write(at, tile_.data(), count);
        }
        return leaf.detach();
    }

private:
    /// Rows that are held open while they are written piece by piece: few, since each holds a local reference.
    static constexpr std::size_t kOpenRows = 16;
    /// Fewer whole rows at a time than these don't pay: a cache line of the source would be read again and again.
    static constexpr std::size_t kFewestRows = 8;
    /// Below this many bytes the source stays in the cache by itself.
    static constexpr std::size_t kCompactFrom = std::size_t{256} << 10U;

    const void* elementAt(const void* base, std::size_t index) const {
        return static_cast<const std::byte*>(base) + index * reader_.width;
    }

    /// Elements this far apart go to Java as they lie.
    bool isReady(std::size_t stride) const { return stride == 1 && reader_.asStored; }

    void fillMatrix(NewJObjectArrayProxy<JObjectProxy>& outer, const void* base, const LevelExtent& rows,
                    const LevelExtent& line) {
        if (isReady(line.stride) || line.size == 0) {
            JObjectRef row(env_, nullptr);
            for (unsigned i = 0; i < rows.size; ++i) {
                row.attach(buildLine(elementAt(base, std::size_t{i} * rows.stride), line));
                outer.set(static_cast<jsize>(i), row.ref());
            }
            return;
        }
        const std::size_t pitch = Tile<T>::pitchFor(line.size);
        const std::size_t room = tile_.makeRoom(rows.size * pitch);
        const std::size_t fitting = std::min<std::size_t>(rows.size, room / pitch);
        if (fitting >= std::min<std::size_t>(rows.size, kFewestRows)) {
            fillWholeRows(outer, base, rows, line, {fitting, line.size, rows.stride, line.stride, pitch});
        } else {
            fillLongRows(outer, base, rows, line, room);
        }
    }

    void fillWholeRows(NewJObjectArrayProxy<JObjectProxy>& outer, const void* base, const LevelExtent& rows,
                       const LevelExtent& line, GatherShape shape) {
        JObjectRef row(env_, nullptr);
        const std::size_t band = shape.rows;
        for (std::size_t first = 0; first < rows.size; first += band) {
            shape.rows = std::min(band, rows.size - first);
            reader_.gather(elementAt(base, first * rows.stride), shape, tile_.data());
            for (std::size_t i = 0; i < shape.rows; ++i) {
                Leaf leaf(env_, line.size);
                leaf.write(0, tile_.data() + i * shape.pitch, line.size);
                row.attach(leaf.detach());
                outer.set(static_cast<jsize>(first + i), row.ref());
            }
        }
    }

    /// Rows that are too long for the tile: some of them are made, and then written together, a piece of each at a
    /// time.
    void fillLongRows(NewJObjectArrayProxy<JObjectProxy>& outer, const void* base, const LevelExtent& rows,
                      const LevelExtent& line, std::size_t room) {
        std::array<std::optional<Leaf>, kOpenRows> open;
        JObjectRef row(env_, nullptr);
        for (std::size_t first = 0; first < rows.size; first += kOpenRows) {
            const std::size_t band = std::min(kOpenRows, rows.size - first);
            for (std::size_t i = 0; i < band; ++i) {
                open[i].emplace(env_, line.size);
            }
            const std::size_t pitch = Tile<T>::pitchWithin(room / band);
            for (std::size_t at = 0; at < line.size; at += pitch) {
                const std::size_t count = std::min<std::size_t>(pitch, line.size - at);
                reader_.gather(elementAt(base, first * rows.stride + at * line.stride),
                               {band, count, rows.stride, line.stride, pitch}, tile_.data());
                for (std::size_t i = 0; i < band; ++i) {
                    open[i]->write(at, tile_.data() + i * pitch, count);
                }
            }
            for (std::size_t i = 0; i < band; ++i) {
                row.attach(open[i]->detach());
                open[i].reset();
                outer.set(static_cast<jsize>(first + i), row.ref());
            }
        }
    }

    /// Fills a level of three or more whose neighbours share cache lines: what lies under some of them is gathered into
    /// a contiguous block each, and the walk goes on over these. False, and nothing done, where that doesn't pay.
    bool fillCompacted(NewJObjectArrayProxy<JObjectProxy>& outer, const void* base, const LevelExtent* levels,
                       std::size_t count) {
        const std::size_t columns = elementsUnder(levels, count);
        if (levels->stride != 1 || levels->size == 1 || columns * levels->size * reader_.width < kCompactFrom) {
            return false;
        }
        const std::size_t pitch = Tile<T>::pitchFor(columns);
        const std::unique_ptr<Compaction> compaction(new (std::nothrow) Compaction(env_));
        const std::size_t fitting = compaction ? compaction->blocks.makeRoom(levels->size * pitch) / pitch : 0;
        const std::size_t band = std::min<std::size_t>(levels->size, fitting);
        if (band < std::min<std::size_t>(levels->size, kFewestRows)) {
            return false;
        }
        const LevelTable under = compacted(levels, count);
        T* const blocks = compaction->blocks.data();
        JObjectRef element(env_, nullptr);
        for (std::size_t first = 0; first < levels->size; first += band) {
            const std::size_t rows = std::min(band, levels->size - first);
            reader_.gather(elementAt(base, first), {rows, columns, 1, levels->span, pitch}, blocks);
            for (std::size_t i = 0; i < rows; ++i) {
                element.attach(compaction->walk.build(blocks + i * pitch, under.data(), under.size()));
                outer.set(static_cast<jsize>(first + i), element.ref());
            }
        }
        return true;
    }

    /// How many elements lie under each element of a level; 0 unless they follow one another at the level's span.
    static std::size_t elementsUnder(const LevelExtent* levels, std::size_t count) {
        for (std::size_t i = 1; i < count; ++i) {
            if (levels[i].stride != levels[i - 1].span) {
                return 0;
            }
        }
        return levels->span == 0 ? 0 : levels[count - 1].span / levels->span;
    }

    /// The levels under the first one, over elements of which only every span-th was kept.
    static LevelTable compacted(const LevelExtent* levels, std::size_t count) {
        LevelTable under(levels + 1, levels + count);
        for (LevelExtent& level : under) {
            level.stride /= levels->span;
            level.span /= levels->span;
        }
        return under;
    }

    struct Compaction {
        explicit Compaction(JNIEnv* env) : walk(env, readerOf<T, T>()) {}
        Tile<T> blocks;
        NestedWalk walk;
    };

    JNIEnv* env_;
    ElementReader<T> reader_;
    Tile<T> tile_;
};

}  // namespace nativevrl
