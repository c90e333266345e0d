#pragma once

#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"

#include <jni.h>

#include <utility>

namespace nativevrl::JConvert {

/// The shape of a native that makes an array: what `body` gives, a qxArrayOwner, goes to Java behind a new handle.
/// Null after a failure, whose Java exception is pending; a lack of memory is one like any other.
template <typename Body>
jobject creating(JNIEnv* env, Body&& body) {
    return guarded<jobject>(env, nullptr, [&] { return handOver(env, std::forward<Body>(body)()); });
}

}  // namespace nativevrl::JConvert
