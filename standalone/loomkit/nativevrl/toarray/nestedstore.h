#pragma once

#include "boundary/stackguard.h"
#include "layout/leveltable.h"
#include "proxies/jboxedproxies.h"
#include "proxies/pinnedelements.h"
#include "toarray/javakind.h"
#include "toarray/nativeelement.h"
#include "toarray/scattertile.h"

#include <jni.h>

#include <algorithm>
#include <cstddef>

namespace nativevrl::JConvert {

/// Elements of a block that lie evenly apart.
struct EvenRun {
    std::size_t count;
    std::size_t stride;
};

/// Where a walk stands: the position `at` in a block, in elements, and the levels from the current one down to the
/// leaves. The region of a cursor is what these levels span from there.
template <typename Element>
struct ArrayCursor {
    Element* block;
    std::size_t at;
    const LevelExtent* level;
    const LevelExtent* levelsEnd;
    qxContents contents;  ///< of the region so far

    bool isLeaf() const { return levelsEnd - level < 2; }
    ArrayCursor below(std::size_t position) const { return {block, position, level + 1, levelsEnd, contents}; }
    /// How many positions a loop over the level visits: none when a level further up has none.
    std::size_t reach() const { return level->span == 0 ? 0 : level->size; }
    /// The position of the level's i-th subscript value.
    std::size_t position(std::size_t i) const { return at + i * level->stride; }

    /// What the levels below span from any position of this level on: in each nesting order the strides of the last
    /// levels follow one another without a gap.
    EvenRun runBelow() const {
        EvenRun run{1, levelsEnd[-1].stride};
        for (const LevelExtent* below = level + 1; below != levelsEnd; ++below) {
            run.count *= below->size;
            run.stride = std::min<std::size_t>(run.stride, below->stride);
        }
        return run;
    }
};

/// Writes nested Java data into one part of an array whose class is that of `Target`: a[i][j] lands in row i and
/// column j. What is longer than its level is cut off, and what no value covers becomes zero. With `asText` the array
/// takes characters: strings, and the texts of numbers and other objects, are runs of UTF-16 units along a level.
///
/// One local reference a level is held at a time, and the pinned block of a row is released before the next row is
/// fetched. Throws tether::Exception as JNI and the object reads do.
template <typename Target>
class NestedStore {
    using Element = typename Target::Storage;
    using Cursor = ArrayCursor<Element>;

public:
    NestedStore(JavaKindReader& kindOf, bool asText) : env_(kindOf.env()), kindOf_(kindOf), asText_(asText) {}

    /// The block is that of a fresh array with these levels and contents. An array without elements takes no value, but
    /// its data is still read, and may still be refused.
    void store(Element* block, qxContents contents, const LevelTable& levels, jobject source, bool hasRoom) {
        hasRoom_ = hasRoom;
        walk(overAll(levels, block, contents), source, kindOf_(source));
    }

private:
    static Cursor overAll(const LevelTable& levels, Element* block, qxContents contents) {
        return {block, 0, levels.data(), levels.data() + levels.size(), contents};
    }

    void walk(const Cursor& cursor, jobject object, JavaKind kind) {
        if (kind == JavaKind::null) {
            clear(cursor);
        } else if (kind == JavaKind::objectArray) {
            storeElements(cursor, static_cast<jobjectArray>(object));
        } else if (isPrimitiveArray(kind)) {
            storeRow(cursor, object, kind);
        } else if (!asText_ || kind == JavaKind::character) {
            put(cursor, cursor.at, Target::read(JObjectProxy(env_, object)));
            clearBehindFirst(cursor);
        } else if (kind == JavaKind::string) {
            storeText(cursor, object);
        } else {
            const JStringProxy text = JObjectProxy(env_, object).toString();
            storeText(cursor, text.ref());
        }
    }

    void storeRow(const Cursor& cursor, jobject array, JavaKind kind) {
        visitRowType(kind, [&](auto zero) {
            const PinnedElements<decltype(zero)> row(env_, array);
            if (asText_ && kind != JavaKind::charArray) {
                storeTexts(cursor, row);
            } else {
                storeRun(cursor, row.begin(), static_cast<std::size_t>(row.length()));
            }
        });
    }

    void storeElements(const Cursor& cursor, jobjectArray array) {
        requireStack(env_);
        const auto length = static_cast<std::size_t>(env_->GetArrayLength(array));
        const std::size_t count = std::min(length, cursor.reach());
        const TileShape shape = tileFor(cursor.level, cursor.levelsEnd, sizeof(Element), count);
        if (ScatterTile<Element> tile(shape); tile.isThere()) {
            storeThrough(tile, cursor, array, count);
        } else if (cursor.isLeaf()) {
            storeLeaves(cursor, array, count);
        } else {
            ElementKinds kinds(kindOf_, array);
            for (std::size_t i = 0; i < count; ++i) {
                const auto element = elementOf(array, i);
                walk(cursor.below(cursor.position(i)), element.ref(), kinds(element.ref()));
            }
        }
        clearFrom(cursor, count);
    }

    template <typename Proxy = JObjectRef>
    Proxy elementOf(jobjectArray array, std::size_t i) {
        return adopt<Proxy>(env_, tether::nextObjectArrayElement(env_, array, static_cast<jsize>(i)));
    }

    /// Stores elements by way of a tile, each in a row of its own.
    void storeThrough(ScatterTile<Element>& tile, const Cursor& cursor, jobjectArray array, std::size_t count) {
        tile.standFor(cursor.level, cursor.levelsEnd, cursor.block + cursor.at);
        ElementKinds kinds(kindOf_, array);
        for (std::size_t i = 0; i < count; ++i) {
            const auto element = elementOf(array, i);
            walk(overAll(tile.rowLevels(), tile.nextRow(), qxContents::unset), element.ref(), kinds(element.ref()));
        }
        tile.flush();
    }

    void storeLeaves(const Cursor& cursor, jobjectArray array, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto element = elementOf<JObjectProxy>(array, i);
            put(cursor, cursor.position(i), element.isNull() ? Element{} : Target::read(element));
        }
    }

    void storeText(const Cursor& cursor, jobject string) {
        if (string == nullptr) {
            clear(cursor);
            return;
        }
        const PinnedText text(env_, string);
        storeRun(cursor, text.begin(), static_cast<std::size_t>(text.length()));
    }

    /// The texts of a primitive row. Each is stored from the start of the region on and along this level, over the
    /// one before it, and what lies behind the row's own length is cleared in the end: the last text is what stays.
    template <typename S>
    void storeTexts(const Cursor& cursor, const PinnedElements<S>& row) {
        Cursor written = cursor;
        written.contents = qxContents::unset;
        const std::size_t count = std::min(static_cast<std::size_t>(row.length()), cursor.reach());
        for (std::size_t i = 0; i < count; ++i) {
            const JStringProxy text = textOf(env_, row.begin()[i]);
            if (cursor.isLeaf()) {
                put(cursor, cursor.position(i), Target::read(JObjectProxy(env_, text.ref())));
            } else {
                storeText(written, text.ref());
            }
        }
        clearFrom(written, count);
    }

    /// A run of elements along the level, each the first of the region below it.
    template <typename S>
    void storeRun(const Cursor& cursor, const S* run, std::size_t length) {
        const std::size_t count = std::min<std::size_t>(length, cursor.level->size);
        const std::size_t stride = cursor.level->stride;
        if (!hasRoom_) {
            return;
        }
        Element* target = cursor.block + cursor.at;
        if (stride == 1) {
            castRun<Target>(run, count, target);
        } else {
            for (std::size_t i = 0; i < count; ++i) {
                target[i * stride] = Target::cast(run[i]);
            }
        }
        if (!cursor.isLeaf() && cursor.contents == qxContents::unset) {
            for (std::size_t i = 0; i < count; ++i) {
                clearBehindFirst(cursor.below(cursor.position(i)));
            }
        }
        clearFrom(cursor, count);
    }

    void put(const Cursor& cursor, std::size_t position, Element value) {
        if (hasRoom_) {
            cursor.block[position] = value;
        }
    }

    /// Clears the whole region.
    void clear(const Cursor& cursor) { clearFrom(cursor, 0); }

    /// Clears the region but for its first element.
    void clearBehindFirst(Cursor cursor) {
        clearFrom(cursor, 1);
        while (!cursor.isLeaf()) {
            cursor = cursor.below(cursor.at);
            clearFrom(cursor, 1);
        }
    }

    /// Clears the positions of the level from the first one on that is given, with what lies below them.
    void clearFrom(const Cursor& cursor, std::size_t first) {
        if (cursor.contents == qxContents::zeros || !hasRoom_ || first >= cursor.level->size) {
            return;
        }
        const EvenRun below = cursor.runBelow();
        for (std::size_t j = 0; j < below.count; ++j) {
            for (std::size_t i = first; i < cursor.level->size; ++i) {
                cursor.block[cursor.position(i) + j * below.stride] = Element{};
            }
        }
    }

    JNIEnv* env_;
    JavaKindReader& kindOf_;
    bool asText_;
    bool hasRoom_ = false;
};

}  // namespace nativevrl::JConvert
