#pragma once

#include "proxies/javalength.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jobjectarrayproxy.h"
#include "proxies/jstringproxy.h"
#include "tether/jnicalls.h"
#include "tojava/slotwrapper.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>

/// What the innermost level of a nested Java array can be. A leaf is a class with
///
///     using Element              what the source's elements are read as
///     static className()         class name of a row, as the levels above compose their own from it
///     Leaf(env, length)          makes a row
///     write(at, begin, count)    the elements from `at` on; a row is written from its front to its end, in one call or
///                                several, one without elements in none
///     row()                      the written row, borrowed
///     detach()                   the same as a local reference of the caller
///
/// and stands in this file. Each throws a tether::Exception where Java has no room for it.
namespace nativevrl {

/// Row of a Java primitive array: T[].
template <typename T>
class PrimitiveLeaf {
public:
    using Element = T;
    static const char* className() { return JPrimitive<T>::arrayClass; }

    PrimitiveLeaf(JNIEnv* env, std::size_t length) : row_(env, length) {}

    void write(std::size_t at, const T* begin, std::size_t count) {
        (row_.env()->*JPrimitive<T>::setRegion)(static_cast<typename JPrimitive<T>::Array>(row_.ref()),
                                                static_cast<jsize>(at), static_cast<jsize>(count), begin);
    }

    jobject row() const { return row_.ref(); }
    [[nodiscard]] jobject detach() { return row_.detach(); }

private:
    NewJPrimitiveArrayProxy<T> row_;
};

/// Row of wrapper objects: Double[] for jdouble, and so on. Every value gets an object of its own from the wrapper's
/// constructor, and one element reference is alive at a time.
template <typename T>
class BoxedLeaf {
    using ElementProxy = typename BoxedProxy<T>::Type;

public:
    using Element = T;
    static const char* className() { return JObjectArrayClassProxy<ElementProxy>::className(); }

    BoxedLeaf(JNIEnv* env, std::size_t length) : row_(env, JPrimitive<T>::boxedClass, javaLength(env, length)) {}

    void write(std::size_t at, const T* begin, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const NewJBoxedProxy<T> value(row_.env(), begin[i]);
            row_.set(static_cast<jsize>(at + i), value.ref());
        }
    }

    jobject row() const { return row_.ref(); }
    [[nodiscard]] jobject detach() { return row_.detach(); }

private:
    NewJObjectArrayProxy<ElementProxy> row_;
};

/// Row of NVArray wrappers around the slots of a cell, struct or function handle array, which keeps them.
class SlotLeaf {
public:
    using Element = qxArray*;
    static const char* className() { return "[Lcom/norvane/toolbox/loomkit/NVArray;"; }

    SlotLeaf(JNIEnv* env, std::size_t length) : row_(env, javaLength(env, length)) {}

    void write(std::size_t at, qxArray* const* begin, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto wrapper = adopt(row_.env(), wrapSlot(row_.env(), begin[i]));
            row_.set(static_cast<jsize>(at + i), wrapper.ref());
        }
    }

    jobject row() const { return row_.ref(); }
    [[nodiscard]] jobject detach() { return row_.detach(); }

private:
    NewJObjectArrayProxy<JNVArrayProxy> row_;
};

/// Row that is one string: an element is a UTF-16 unit, zero units among them. The class name has no "L" and ";", so
/// strings stand in arrays of one level only: an array of more dimensions than two fails in the class look-up.
class StringLeaf {
public:
    using Element = jchar;
    static const char* className() { return JStringClassProxy::className(); }

    StringLeaf(JNIEnv* env, std::size_t length) : env_(env), length_(length) { javaLength(env, length); }

    /// Units that come all at once go to Java without a copy in between.
    void write(std::size_t at, const jchar* begin, std::size_t count) {
        if (count == length_) {
            string_.emplace(env_, begin, begin + count);
            return;
        }
        if (!units_) {
            units_.reset(new (std::nothrow) jchar[length_]);
            if (!units_) {
                tether::throwOutOfMemory(env_);
            }
        }
        std::copy(begin, begin + count, units_.get() + at);
    }

    jobject row() { return written().ref(); }
    [[nodiscard]] jobject detach() { return written().detach(); }

private:
    JStringProxy& written() {
        assert(string_ || units_ || length_ == 0);
        if (!string_) {
            string_.emplace(env_, units_.get(), units_.get() + length_);
        }
        return *string_;
    }

    JNIEnv* env_;
    std::size_t length_;
    std::unique_ptr<jchar[]> units_;
    std::optional<NewJStringProxy> string_;
};

}  // namespace nativevrl
