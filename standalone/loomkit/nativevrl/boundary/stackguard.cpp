#include "boundary/stackguard.h"

#include "tether/jnicalls.h"

#include <pthread.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

namespace nativevrl {

namespace {

/// What a level may take before it asks again. A call into Java needs more, and the virtual machine itself refuses it
/// with the same error when that isn't there.
constexpr std::size_t roomForALevel = std::size_t{48} * 1024;

/// The virtual machine's own guard zone at the end of a stack.
constexpr std::size_t guardPages = 4;

/// Where the part of this thread's stack begins that is kept free; 0 when the system doesn't tell. The virtual machine
/// must know the thread: before that, the stack of the main thread has no end yet.
std::uintptr_t readStackLimit() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return 0;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    const bool isKnown =
        pthread_attr_getstack(&attributes, &lowest, &size) == 0 && pthread_attr_getguardsize(&attributes, &guard) == 0;
    pthread_attr_destroy(&attributes);
    const std::size_t guardZone = guard + guardPages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return isKnown ? reinterpret_cast<std::uintptr_t>(lowest) + guardZone + roomForALevel : 0;
}

}  // namespace

void requireStack(JNIEnv* env) {
    thread_local std::uintptr_t limit = 0;
    if (limit == 0) {
        limit = readStackLimit();
    }
    if (limit == 0 || reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < limit) {
        tether::throwNamedException(env, "java/lang/StackOverflowError");
        throw tether::Exception();
    }
}

}  // namespace nativevrl
