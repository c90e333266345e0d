#pragma once

#include "proxies/castrun.h"
#include "proxies/javalength.h"
#include "proxies/jclassproxy.h"
#include "proxies/jprimitive.h"
#include "proxies/numericcast.h"
#include "proxies/pinnedelements.h"

#include <cstddef>
#include <utility>

namespace nativevrl {

/// Any Java array.
class JArrayProxy : public JObjectRef {
public:
    using JObjectRef::JObjectRef;

    /// Number of elements; 0 for null.
    jsize length() const { return isNull() ? 0 : env()->GetArrayLength(static_cast<jarray>(ref())); }
};

template <typename T>
class JPrimitiveArrayClassProxy : public JSingletonClassProxy<JPrimitiveArrayClassProxy<T>> {
public:
    using JSingletonClassProxy<JPrimitiveArrayClassProxy<T>>::JSingletonClassProxy;
    static const char* className() { return JPrimitive<T>::arrayClass; }
};

/// A Java array of a primitive type. Its elements are pinned at first need, stay so across other JNI calls, and are
/// written back when they are released, also when they were only read.
template <typename T>
class JPrimitiveArrayProxy : public JArrayProxy {
public:
    using ClassProxy = JPrimitiveArrayClassProxy<T>;

    JPrimitiveArrayProxy(JNIEnv* env, jobject array) : JArrayProxy(env, array) {}
    /// Refers to the same array; the copy pins a block of its own.
    JPrimitiveArrayProxy(const JPrimitiveArrayProxy& other) : JArrayProxy(other) {}
    /// Takes the pinned block along.
    JPrimitiveArrayProxy(JPrimitiveArrayProxy&& other) noexcept = default;
    JPrimitiveArrayProxy& operator=(const JPrimitiveArrayProxy& other) {
        JArrayProxy::operator=(other);
        return *this;
    }
    /// The block is written back on the way.
    JPrimitiveArrayProxy& operator=(JPrimitiveArrayProxy&& other) noexcept {
        JArrayProxy::operator=(std::move(other));
        return *this;
    }
    // The block goes before the reference that it was pinned through.
    ~JPrimitiveArrayProxy() override { releaseElements(); }

    /// The elements, pinned until they are released. Throws tether::NullPointerException for a proxy of null and
    /// tether::OutOfMemoryException when they can't be had.
    T* getElements() {
        if (!elements_.isPinned()) {
            elements_ = PinnedElements<T>(env(), ref());
        }
        return elements_.elements();
    }

    void releaseElements() { elements_.release(); }

    void reset() override {
        releaseElements();
        JArrayProxy::reset();
    }

    /// An array handed to Java has its data written back first.
    [[nodiscard]] jobject detach() override {
        releaseElements();
        return JArrayProxy::detach();
    }

private:
    PinnedElements<T> elements_{env(), nullptr};
};

/// A new Java array of a primitive type. Each constructor throws tether::OutOfMemoryException when there is no room.
template <typename T>
class NewJPrimitiveArrayProxy : public JPrimitiveArrayProxy<T> {
    using Jni = JPrimitive<T>;

public:
    /// `length` zeros.
    NewJPrimitiveArrayProxy(JNIEnv* env, std::size_t length) : JPrimitiveArrayProxy<T>(env, nullptr) {
        jobject array = (env->*Jni::newArray)(javaLength(env, length));
        if (array == nullptr) {
            tether::throwOutOfMemory(env);
        }
        this->attach(array);
    }

    /// A contiguous run of T, copied in one call.
    NewJPrimitiveArrayProxy(JNIEnv* env, const T* begin, const T* end)
        : NewJPrimitiveArrayProxy(env, static_cast<std::size_t>(end - begin)) {
        (env->*Jni::setRegion)(static_cast<typename Jni::Array>(this->ref()), 0, static_cast<jsize>(end - begin),
                               begin);
    }

    /// A contiguous run of another type, each element cast.
    template <typename S>
    NewJPrimitiveArrayProxy(JNIEnv* env, const S* begin, const S* end)
        : NewJPrimitiveArrayProxy(env, static_cast<std::size_t>(end - begin)) {
        castRun(begin, static_cast<std::size_t>(end - begin), this->getElements());
    }

    /// Every stride-th element, cast; `end` is a whole number of strides behind `begin`, and the stride above 0.
    template <typename S>
    NewJPrimitiveArrayProxy(JNIEnv* env, const S* begin, std::size_t stride, const S* end, std::size_t)
        : NewJPrimitiveArrayProxy(env, static_cast<std::size_t>(end - begin) / stride) {
        for (T* target = this->getElements(); begin != end; begin += stride) {
            *target++ = castElement<T>(*begin);
        }
    }

    /// A range of `end - begin` values, each cast.
    template <typename Iterator>
    static NewJPrimitiveArrayProxy fromRange(JNIEnv* env, Iterator begin, Iterator end) {
        NewJPrimitiveArrayProxy array(env, static_cast<std::size_t>(end - begin));
        for (T* target = array.getElements(); begin != end; ++begin) {
            *target++ = castElement<T>(*begin);
        }
        return array;
    }
};

}  // namespace nativevrl
