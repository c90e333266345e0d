#pragma once

#include "boundary/stackguard.h"
#include "layout/leveltable.h"
#include "proxies/jboxedproxies.h"
#include "proxies/pinnedelements.h"
#include "toarray/javakind.h"
#include "toarray/nativeelement.h"
#include "toarray/tile.h"

#include <jni.h>

#include <algorithm>
#include <cstddef>

namespace nativevrl::JConvert {

/// Where a walk stands: the position `at` in a block, in elements, and the levels from the current one down to the
/// leaves. The region of a cursor is what these levels span from there. `zeroed` tells that it holds zeros so far.
template <typename Element>
struct ArrayCursor {
    Element* block;
    std::size_t at;
    const LevelExtent* level;
    const LevelExtent* levelsEnd;
    bool zeroed;

    bool isLeaf() const { return levelsEnd - level < 2; }
    ArrayCursor below(std::size_t position) const { return {block, position, level + 1, levelsEnd, zeroed}; }
    /// How many positions a loop over the level visits: none when a level further up has none.
    std::size_t reach() const { return level->span == 0 ? 0 : level->size; }
    /// The position of the level's i-th subscript value.
    std::size_t position(std::size_t i) const { return at + i * level->stride; }
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
    NestedStore(JNIEnv* env, bool asText) : env_(env), kindOf_(env), asText_(asText) {}

    /// The block is that of a fresh array with these levels; `zeroed` tells that it holds zeros. An array without
    /// elements takes no value, but its data is still read, and may still be refused.
    void store(Element* block, const LevelTable& levels, jobject source, bool hasRoom, bool zeroed) {
        hasRoom_ = hasRoom;
        walk({block, 0, levels.data(), levels.data() + levels.size(), zeroed}, source, kindOf_(source));
    }

private:
    void walk(const Cursor& cursor, jobject object, JavaKind kind) {
        if (kind == JavaKind::kNull) {
            clear(cursor);
        } else if (kind == JavaKind::kObjectArray) {
            storeElements(cursor, static_cast<jobjectArray>(object));
        } else if (isPrimitiveArray(kind)) {
            storeRow(cursor, object, kind);
        } else if (!asText_ || kind == JavaKind::kCharacter) {
            put(cursor, cursor.at, Target::read(JObjectProxy(env_, object)));
            clearBehindFirst(cursor);
        } else if (kind == JavaKind::kString) {
            storeText(cursor, object);
        } else {
            const JStringProxy text = JObjectProxy(env_, object).toString();
            storeText(cursor, text.ref());
        }
    }

    void storeRow(const Cursor& cursor, jobject array, JavaKind kind) {
        visitPrimitive(kind, [&](auto zero) {
            const PinnedElements<decltype(zero)> row(env_, array);
            if (asText_ && kind != JavaKind::kCharArray) {
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
        ElementKinds kinds(kindOf_, array);
        JObjectProxy element(env_, nullptr);
        const auto fetch = [&](std::size_t i) {
            element.reset();
            element.attach(tether::nextObjectArrayElement(env_, array, static_cast<jsize>(i)));
        };
        const TileShape shape = tileFor(cursor.level, cursor.levelsEnd, sizeof(Element), count);
        if (Tile<Element> tile(shape); tile.isThere()) {
            tile.standFor(cursor.level, cursor.levelsEnd, cursor.block + cursor.at);
            const LevelTable& levels = tile.rowLevels();
            for (std::size_t i = 0; i < count; ++i) {
                fetch(i);
                walk({tile.nextRow(), 0, levels.data(), levels.data() + levels.size(), false}, element.ref(),
                     kinds(element.ref()));
            }
            tile.flush();
        } else {
            for (std::size_t i = 0; i < count; ++i) {
                fetch(i);
                if (cursor.isLeaf()) {
                    put(cursor, cursor.position(i), element.isNull() ? Element{} : Target::read(element));
                } else {
                    walk(cursor.below(cursor.position(i)), element.ref(), kinds(element.ref()));
                }
            }
        }
        clearFrom(cursor, count);
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
        written.zeroed = false;
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
        if (!cursor.isLeaf() && !cursor.zeroed) {
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
    void clearBehindFirst(const Cursor& cursor) {
        if (!cursor.isLeaf()) {
            clearBehindFirst(cursor.below(cursor.at));
        }
        clearFrom(cursor, 1);
    }

    /// Clears the positions of the level from the i-th on, with what lies below them.
    void clearFrom(const Cursor& cursor, std::size_t i) {
        if (cursor.zeroed || !hasRoom_) {
            return;
        }
        for (; i < cursor.level->size; ++i) {
            if (cursor.isLeaf()) {
                cursor.block[cursor.position(i)] = Element{};
            } else {
                clear(cursor.below(cursor.position(i)));
            }
        }
    }

    JNIEnv* env_;
    JavaKindReader kindOf_;
    bool asText_;
    bool hasRoom_ = false;
};

}  // namespace nativevrl::JConvert
