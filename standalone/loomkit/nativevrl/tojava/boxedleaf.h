#pragma once

#include "proxies/javalength.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jobjectarrayproxy.h"

#include <cstddef>
#include <string>

namespace nativevrl {

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

    [[nodiscard]] jobject detach() { return row_.detach(); }

private:
    NewJObjectArrayProxy<ElementProxy> row_;
};

}  // namespace nativevrl
