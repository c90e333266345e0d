#include "boundary/boundary.h"

#include <string>

namespace nativevrl {

void reportOutOfMemory(JNIEnv* env) noexcept {
    try {
        tether::throwNamedException(env, "java/lang/OutOfMemoryError");
    } catch (const std::exception&) {
        // What kept it from being raised is pending in its place.
        return;
    }
}

void throwRuntimeFailure(JNIEnv* env, const char* prefix, const std::exception& failure) {
    tether::throwNamedException(env, nvExceptionClass, (std::string(prefix) + failure.what()).c_str());
}

void report(JNIEnv* env, const char* className, const std::exception& failure) {
    guarded(env, [&] { tether::throwNamedException(env, className, failure.what()); });
}

}  // namespace nativevrl
