#pragma once

#include "layout/leveltable.h"
#include "proxies/javalength.h"
#include "proxies/jobjectarrayproxy.h"
#include "tojava/gathertile.h"
#include "tojava/leaves.h"
#include "tojava/partview.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <optional>
#include <string>

namespace nativevrl {

/// Builds the nested Java array of dense elements: one level of arrays for each entry of the level table, outermost
/// first, and rows of Leaf at the innermost. Element [i][j]... is the one at i and j times their levels' strides.
///
/// Rows whose elements lie apart are gathered through a tile, neighbours together, so that each cache line of the
/// source is read once; a gathered row goes to Java in one call, as a contiguous one does. Neighbouring rows belong to
/// arrays of the first levels next to one another, so some of these are filled at the same time. What is open at each
/// level stands in a list and not on the stack, which is as deep as the caller's thread has it.
template <typename Leaf>
class NestedWalk {
    using T = typename Leaf::Element;
    using Tile = GatherTile<T>;

public:
    NestedWalk(JNIEnv* env, const PartView<T>& part) : env_(env), part_(part) {}

    /// The array of these levels, one at least. A local reference of the caller. Throws std::bad_alloc when there is
    /// no room for the list of what is open.
    jobject build(const LevelTable& levels) {
        if (levels.size() == 1) {
            return buildRow(levels[0].stride, levels[0].size);
        }
        planTile(levels.back());
        // The class names of the arrays within are the ends of this one.
        const std::string elementClass = std::string(levels.size() - 2, '[') + Leaf::className();
        OpenLevels open(levels.size() - 1);
        open[0].arrays.emplace_back(env_, elementClass.c_str(), javaLength(env_, levels[0].size));
        fill(open, levels, elementClass.c_str());
        return open[0].arrays[0].detach();
    }

    /// One row of the first `length` elements that lie `stride` apart.
    jobject buildRow(std::size_t stride, std::size_t length) {
        Leaf leaf(env_, length);
        writeRow(leaf, 0, stride, length);
        return leaf.detach();
    }

private:
    using Outer = NewJObjectArrayProxy<JObjectProxy>;

    /// How many rows are gathered together at most, which is how many arrays are filled at the same time. The more
    /// there are, the longer are the runs of source that are read; rows beyond usualRows must be short for that.
    static constexpr std::size_t mostRows = 128;
    static constexpr std::size_t usualRows = 64;
    static constexpr std::size_t shortRow = Tile::largest / mostRows / 2;
    static_assert(mostRows * shortRow <= Tile::largest);
    /// Rows that are too long for the tile are held open while they are written piece by piece: few, since each holds a
    /// local reference.
    static constexpr std::size_t openRows = 16;
    static_assert(openRows * Tile::line <= Tile::smallest, "a piece of a row takes a cache line at least");
    /// As many rows share a cache line of the widest elements. Fewer don't pay: lines would be read again and again.
    static constexpr std::size_t fewestRows = 8;
    /// From this many bytes on the source does not stay in the cache by itself, and is asked for ahead of time.
    static constexpr std::size_t prefetchFrom = std::size_t{256} << 10U;

    /// Arrays of one level whose elements are neighbours in the source: all their first elements, then all their
    /// second ones and so on.
    struct Siblings {
        boost::container::small_vector<Outer, 1> arrays;
        std::size_t index = 0;  ///< of the first array's first element
        unsigned filled = 0;    ///< elements that each of the arrays has
        unsigned ahead = 0;     ///< the first arrays, which have one more

        unsigned count() const { return static_cast<unsigned>(arrays.size()); }

        /// Sets the element that comes next in the order of the source.
        void add(jobject value) {
            arrays[ahead].set(static_cast<jsize>(filled), value);
            if (++ahead == count()) {
                ahead = 0;
                ++filled;
            }
        }
    };

    /// What is open at each level of arrays. A matrix has one of them, with one array, and takes nothing of the heap.
    using OpenLevels = boost::container::small_vector<Siblings, 1>;

    /// Rows that are neighbours in the source.
    struct Rows {
        Siblings& parents;
        unsigned count;
        std::size_t index;                ///< of the first row's first element
        std::optional<std::size_t> next;  ///< the same of the rows that come after these
    };

    /// Settles how many rows of `line` are gathered together; `line.stride` is how many neighbours there can be.
    void planTile(const LevelExtent& line) {
        const std::size_t pitch = paddedPitch(line.size, Tile::line);
        const std::size_t most = pitch <= shortRow ? mostRows : usualRows;
        const std::size_t rows = std::min<std::size_t>(most, line.stride);
        const std::size_t room = tile_.makeRoom(rows * pitch);
        const std::size_t fitting = std::min(most, room / pitch);
        areLong_ = fitting < std::min(rows, fewestRows);
        if (!areLong_) {
            tile_.setPitch(pitch);
        }
        band_ = static_cast<unsigned>(areLong_               ? openRows
                                      : fitting > fewestRows ? fitting - fitting % fewestRows
                                                             : std::max<std::size_t>(fitting, 1));
    }

    /// Fills the outermost array; `open` has a place for each level of arrays.
    void fill(OpenLevels& open, const LevelTable& levels, const char* elementClass) {
        for (std::size_t depth = 0; depth != 0 || open[0].filled < levels[0].size;) {
            Siblings& siblings = open[depth];
            const LevelExtent& level = levels[depth];
            if (siblings.filled == level.size) {
                handUp(siblings, open[--depth]);
                continue;
            }
            const unsigned steps = stepsFrom(siblings, level);
            const unsigned children = siblings.count() * steps;
            const std::size_t index = siblings.index + std::size_t{siblings.filled} * level.stride;
            if (depth + 1 < open.size()) {
                ++depth;
                make(open[depth], children, elementClass + depth, levels[depth].size);
                open[depth].index = index;
            } else {
                const bool isLast = siblings.filled + steps == level.size;
                const std::size_t next = index + std::size_t{steps} * level.stride;
                fillRows({siblings, children, index, isLast ? std::nullopt : std::optional(next)}, levels.back());
            }
        }
    }

    /// How many elements each of some siblings gets next: several where the siblings are all there are side by side, so
    /// that the elements after the next follow as neighbours. There are never more children than rows in a band.
    unsigned stepsFrom(const Siblings& siblings, const LevelExtent& level) const {
        const unsigned most = level.stride == siblings.count() ? std::max(band_ / siblings.count(), 1U) : 1;
        const unsigned steps = std::min(most, level.size - siblings.filled);
        assert(siblings.count() * steps <= band_);
        return steps;
    }

    /// New arrays of `length` nulls each, in the place of others.
    void make(Siblings& siblings, unsigned count, const char* elementClass, unsigned length) {
        siblings.arrays.clear();
        siblings.arrays.reserve(count);
        for (unsigned i = 0; i < count; ++i) {
            siblings.arrays.emplace_back(env_, elementClass, javaLength(env_, length));
        }
        siblings.filled = 0;
    }

    /// Puts arrays that are full into their own.
    static void handUp(Siblings& full, Siblings& parents) {
        for (const Outer& array : full.arrays) {
            parents.add(array.ref());
        }
        full.arrays.clear();
    }

    void fillRows(const Rows& rows, const LevelExtent& line) {
        if (part_.isRun(line.stride) || line.size == 0) {
            for (unsigned i = 0; i < rows.count; ++i) {
                Leaf leaf(env_, line.size);
                writeRow(leaf, rows.index + i, line.stride, line.size);
                rows.parents.add(leaf.row());
            }
        } else if (areLong_) {
            fillLongRows(rows, line);
        } else {
            fillWholeRows(rows, line);
        }
    }

    /// Writes a row by itself.
    void writeRow(Leaf& leaf, std::size_t index, std::size_t stride, std::size_t length) {
        if (length != 0 && part_.isRun(stride)) {
            leaf.write(0, part_.runFrom(index), length);
            return;
        }
        for (std::size_t at = 0; at < length; at += Tile::smallest) {
            const std::size_t count = std::min(Tile::smallest, length - at);
            part_.gatherFrom(index + at * stride, GatherShape::row(count, stride), tile_.row(0));
            leaf.write(at, tile_.row(0), count);
        }
    }

    void fillWholeRows(const Rows& rows, const LevelExtent& line) {
        gatherRows(rows.count, rows.index, line.size, line.stride);
        const bool prefetches = rows.next && std::size_t{line.span} * part_.width() >= prefetchFrom;
        for (unsigned i = 0; i < rows.count; ++i) {
            if (prefetches) {
                prefetchShare(*rows.next, line, i, rows.count);
            }
            Leaf leaf(env_, line.size);
            leaf.write(0, tile_.row(i), line.size);
            rows.parents.add(leaf.row());
        }
    }

    /// Gathers `length` elements, `stride` apart, of neighbouring rows into the tile.
    void gatherRows(std::size_t count, std::size_t index, std::size_t length, std::size_t stride) {
        assert(count * tile_.pitch() <= tile_.capacity() && length <= tile_.pitch());
        part_.gatherFrom(index, GatherShape::neighbours(count, length, stride, tile_.pitch()), tile_.row(0));
    }

    /// Asks for some columns of the `rows` rows that come next, as the share of one of as many rows that are written in
    /// the meantime: the memory is then waited for while Java copies.
    void prefetchShare(std::size_t next, const LevelExtent& line, std::size_t share, std::size_t rows) const {
        const std::size_t end = (share + 1) * line.size / rows;
        for (std::size_t column = share * line.size / rows; column < end; ++column) {
            const std::byte* from = part_.addressOf(next + column * line.stride);
            for (std::size_t at = 0; at < rows * part_.width(); at += cacheLine) {
                __builtin_prefetch(from + at);
            }
        }
    }

    /// The rows are made first, and then written together, a piece of each at a time.
    void fillLongRows(const Rows& rows, const LevelExtent& line) {
        assert(rows.count <= openRows);
        std::array<std::optional<Leaf>, openRows> open;
        for (unsigned i = 0; i < rows.count; ++i) {
            open[i].emplace(env_, line.size);
        }
        const std::size_t piece = paddedPitchWithin(tile_.capacity() / rows.count, Tile::line);
        tile_.setPitch(piece);
        for (std::size_t at = 0; at < line.size; at += piece) {
            const std::size_t length = std::min<std::size_t>(piece, line.size - at);
            gatherRows(rows.count, rows.index + at * line.stride, length, line.stride);
            for (unsigned i = 0; i < rows.count; ++i) {
                open[i]->write(at, tile_.row(i), length);
            }
        }
        for (unsigned i = 0; i < rows.count; ++i) {
            rows.parents.add(open[i]->row());
        }
    }

    JNIEnv* env_;
    PartView<T> part_;
    unsigned band_ = 1;     ///< rows that are gathered together
    bool areLong_ = false;  ///< the rows don't fit into the tile as wholes
    Tile tile_;
};

}  // namespace nativevrl
