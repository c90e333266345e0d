#pragma once

#include "proxies/jarrayproxy.h"

#include <cstddef>
#include <string>

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

    [[nodiscard]] jobject detach() { return row_.detach(); }

private:
    NewJPrimitiveArrayProxy<T> row_;
};

}  // namespace nativevrl
