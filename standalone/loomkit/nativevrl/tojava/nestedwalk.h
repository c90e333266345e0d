#pragma once

#include "layout/leveltable.h"
#include "proxies/javalength.h"
#include "proxies/jobjectarrayproxy.h"
#include "tojava/elementreader.h"
#include "tojava/leaves.h"
#include "tojava/tile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace nativevrl {

/// Class of the elements of an array of `depth` levels above rows of Leaf.
template <typename Leaf>
std::string nestingClass(std::size_t depth) {
    return std::string(depth - 1, '[') + Leaf::className();
}

/// A new array of `length` nulls, of `depth` levels above rows of Leaf.
template <typename Leaf>
NewJObjectArrayProxy<JObjectProxy> newNesting(JNIEnv* env, std::size_t depth, std::size_t length) {
    return {env, nestingClass<Leaf>(depth).c_str(), javaLength(env, length)};
}

/// Builds the nested Java array of dense elements: one level of arrays for each entry of the level table, outermost
/// first, and rows of Leaf at the innermost. Element [i][j]... is the one at i and j times their levels' strides.
///
/// Rows whose elements lie apart are gathered through a tile, neighbours together, so that each cache line of the
/// source is read once; a gathered row goes to Java in one call, as a contiguous one does. Neighbouring rows belong to
/// arrays of the first levels next to one another, so some of these are filled at the same time. The source is borrowed
/// and must not change.
template <typename Leaf>
class NestedWalk {
    using T = typename Leaf::Element;

public:
    NestedWalk(JNIEnv* env, const ElementReader<T>& reader) : env_(env), reader_(reader) {}

    /// The array of `count` levels, one at least, over the elements from `base` on. A local reference of the caller.
    jobject build(const void* base, const LevelExtent* levels, std::size_t count) {
        if (count < 2) {
            return buildRow(base, levels->stride, levels->size);
        }
        base_ = base;
        planTile(levels[count - 1]);
        Outer outer = newNesting<Leaf>(env_, count - 1, levels->size);
        fill({&outer, 1}, 0, levels, count);
        return outer.detach();
    }

    /// One row of `length` elements that lie `stride` apart.
    jobject buildRow(const void* base, std::size_t stride, std::size_t length) {
        Leaf leaf(env_, length);
        if (isReady(stride) || length == 0) {
            leaf.write(0, static_cast<const T*>(base), length);
            return leaf.detach();
        }
        base_ = base;
        for (std::size_t at = 0; at < length; at += Tile<T>::kSmallest) {
            const std::size_t count = std::min(Tile<T>::kSmallest, length - at);
            reader_.gather(elementAt(at * stride), {1, count, 0, stride, count}, tile_.data());
            leaf.write(at, tile_.data(), count);
        }
        return leaf.detach();
    }

private:
    using Outer = NewJObjectArrayProxy<JObjectProxy>;

    /// How many rows are gathered together at most, which is how many arrays are filled at the same time. The more
    /// there are, the longer are the runs of source that are read; rows beyond kUsualRows must be short for that.
    static constexpr std::size_t kMostRows = 128;
    static constexpr std::size_t kUsualRows = 64;
    static constexpr std::size_t kShortRow = Tile<T>::kLargest / kMostRows / 2;
    /// Rows that are too long for the tile are held open while they are written piece by piece: few, since each holds a
    /// local reference.
    static constexpr std::size_t kOpenRows = 16;
    /// As many rows share a cache line of the widest elements. Fewer don't pay: lines would be read again and again.
    static constexpr std::size_t kFewestRows = 8;
    /// From this many bytes on the source does not stay in the cache by itself, and is asked for ahead of time.
    static constexpr std::size_t kPrefetchFrom = std::size_t{256} << 10U;

    /// Arrays of one level whose elements are neighbours in the source.
    struct Siblings {
        Outer* arrays;
        unsigned count;
    };

    /// What goes into some siblings from their element `first` on: all their first elements, then all their second ones
    /// and so on. `count` in all.
    struct Children {
        Siblings parents;
        unsigned first;
        unsigned count;

        void set(unsigned child, jobject value) const {
            parents.arrays[child % parents.count].set(static_cast<jsize>(first + child / parents.count), value);
        }
    };

    const void* elementAt(std::size_t index) const {
        return static_cast<const std::byte*>(base_) + index * reader_.width;
    }

    /// Elements this far apart go to Java as they lie.
    bool isReady(std::size_t stride) const { return stride == 1 && reader_.asStored; }

    /// Settles how many rows of `line` are gathered together; `line.stride` is how many neighbours there can be.
    void planTile(const LevelExtent& line) {
        pitch_ = Tile<T>::pitchFor(line.size);
        const std::size_t most = pitch_ <= kShortRow ? kMostRows : kUsualRows;
        const std::size_t rows = std::min<std::size_t>(most, line.stride);
        const std::size_t room = tile_.makeRoom(rows * pitch_);
        const std::size_t fitting = std::min(most, room / pitch_);
        areLong_ = fitting < std::min(rows, kFewestRows);
        band_ = static_cast<unsigned>(areLong_                ? kOpenRows
                                      : fitting > kFewestRows ? fitting - fitting % kFewestRows
                                                              : fitting);
        prefetches_ = std::size_t{line.span} * reader_.width >= kPrefetchFrom;
    }

    /// Fills siblings whose elements are the first of these levels. `index` is the first sibling's first element.
    void fill(Siblings parents, std::size_t index, const LevelExtent* levels, std::size_t count) {
        // Where the siblings are all there are side by side, their next elements follow as neighbours.
        const bool areWhole = levels->stride == parents.count;
        const unsigned step = areWhole ? std::max(band_ / parents.count, 1U) : 1;
        for (unsigned first = 0; first < levels->size;) {
            const unsigned steps = std::min(step, levels->size - first);
            const Children children = {parents, first, parents.count * steps};
            const std::size_t childIndex = index + std::size_t{first} * levels->stride;
            first += steps;
            if (count == 2) {
                const bool isLast = first == levels->size;
                fillRows(children, childIndex, isLast ? 0 : index + std::size_t{first} * levels->stride, levels[1]);
            } else {
                fillArrays(children, childIndex, levels + 1, count - 1);
            }
        }
    }

    void fillArrays(const Children& children, std::size_t index, const LevelExtent* levels, std::size_t count) {
        const std::string elementClass = nestingClass<Leaf>(count - 1);
        std::vector<Outer> arrays;
        arrays.reserve(children.count);
        for (unsigned i = 0; i < children.count; ++i) {
            arrays.emplace_back(env_, elementClass.c_str(), javaLength(env_, levels->size));
        }
        fill({arrays.data(), children.count}, index, levels, count);
        for (unsigned i = 0; i < children.count; ++i) {
            children.set(i, arrays[i].ref());
        }
    }

    /// `next` is the index of the rows that come after these; 0 for none.
    void fillRows(const Children& children, std::size_t index, std::size_t next, const LevelExtent& line) {
        if (isReady(line.stride) || line.size == 0) {
            JObjectRef row(env_, nullptr);
            for (unsigned i = 0; i < children.count; ++i) {
                row.attach(buildRow(line.size == 0 ? nullptr : elementAt(index + i), line.stride, line.size));
                children.set(i, row.ref());
            }
        } else if (areLong_) {
            fillLongRows(children, index, line);
        } else {
            fillWholeRows(children, index, next, line);
        }
    }

    void fillWholeRows(const Children& children, std::size_t index, std::size_t next, const LevelExtent& line) {
        reader_.gather(elementAt(index), {children.count, line.size, 1, line.stride, pitch_}, tile_.data());
        JObjectRef row(env_, nullptr);
        for (unsigned i = 0; i < children.count; ++i) {
            if (prefetches_ && next != 0) {
                prefetchShare(next, line, i, children.count);
            }
            Leaf leaf(env_, line.size);
            leaf.write(0, tile_.data() + i * pitch_, line.size);
            row.attach(leaf.detach());
            children.set(i, row.ref());
        }
    }

    /// Asks for some columns of the `rows` rows that come next, as the share of one of as many rows that are written in
    /// the meantime: the memory is then waited for while Java copies.
    void prefetchShare(std::size_t next, const LevelExtent& line, std::size_t share, std::size_t rows) const {
        constexpr std::size_t cacheLine = 64;
        const std::size_t end = (share + 1) * line.size / rows;
        for (std::size_t column = share * line.size / rows; column < end; ++column) {
            const auto* from = static_cast<const std::byte*>(elementAt(next + column * line.stride));
            for (std::size_t at = 0; at < rows * reader_.width; at += cacheLine) {
                __builtin_prefetch(from + at);
            }
        }
    }

    /// The rows are made first, and then written together, a piece of each at a time.
    void fillLongRows(const Children& children, std::size_t index, const LevelExtent& line) {
        std::array<std::optional<Leaf>, kOpenRows> open;
        for (unsigned i = 0; i < children.count; ++i) {
            open[i].emplace(env_, line.size);
        }
        const std::size_t piece = Tile<T>::pitchWithin(tile_.capacity() / children.count);
        for (std::size_t at = 0; at < line.size; at += piece) {
            const std::size_t length = std::min<std::size_t>(piece, line.size - at);
            reader_.gather(elementAt(index + at * line.stride), {children.count, length, 1, line.stride, piece},
                           tile_.data());
            for (unsigned i = 0; i < children.count; ++i) {
                open[i]->write(at, tile_.data() + i * piece, length);
            }
        }
        JObjectRef row(env_, nullptr);
        for (unsigned i = 0; i < children.count; ++i) {
            row.attach(open[i]->detach());
            children.set(i, row.ref());
        }
    }

    JNIEnv* env_;
    ElementReader<T> reader_;
    const void* base_ = nullptr;
    std::size_t pitch_ = 0;
    unsigned band_ = 1;
    bool prefetches_ = false;
    bool areLong_ = false;
    Tile<T> tile_;
};

}  // namespace nativevrl
