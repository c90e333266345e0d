#include "vrlkrt/run/stackspace.h"

#include <pthread.h>

#include <cstddef>
#include <cstdint>

namespace vrlkrt {

namespace {

/// What a component function may need besides the runtime: the machine's own guard zones, and work space.
constexpr std::size_t reserve = std::size_t{192} * 1024;

/// Lowest address of this thread's stack; 0 when the system does not tell.
std::uintptr_t lowestStackAddress() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return 0;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    const bool known = pthread_attr_getstack(&attributes, &lowest, &size) == 0;
    pthread_attr_destroy(&attributes);
    return known ? reinterpret_cast<std::uintptr_t>(lowest) : 0;
}

}  // namespace

bool hasStackSpace() {
    thread_local const std::uintptr_t lowest = lowestStackAddress();
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - lowest > reserve;
}

}  // namespace vrlkrt
