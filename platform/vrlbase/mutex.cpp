#include "vrlbase/vrlbase.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace {

/// A recursive lock that knows its holder, so that a stray release does nothing. The standard one leaves that
/// undefined.
class HeldLock {
public:
    void acquire() {
        const std::uint64_t self = thisThread();
        std::unique_lock<std::mutex> guard(mutex_);
        if (holder_ != self) {
            free_.wait(guard, [this] { return depth_ == 0; });
            holder_ = self;
        }
        ++depth_;
    }

    void release() {
        const std::lock_guard<std::mutex> guard(mutex_);
        if (holder_ != thisThread()) {
            return;
        }
        if (--depth_ == 0) {
            holder_ = 0;
            free_.notify_one();
        }
    }

private:
    /// A number of the thread's own that no later thread gets, unlike the system's.
    static std::uint64_t thisThread() {
        static std::atomic<std::uint64_t> last{0};
        thread_local const std::uint64_t number = ++last;
        return number;
    }

    std::mutex mutex_;
    std::condition_variable free_;
    std::uint64_t holder_ = 0;
    std::uint64_t depth_ = 0;
};

/// Left to the process's end: Java threads may still hold it while static objects go.
HeldLock& runtimeLock() {
    static HeldLock& instance = *new HeldLock;
    return instance;
}

}  // namespace

void vrlAcquireMutex() { runtimeLock().acquire(); }

void vrlReleaseMutex() { runtimeLock().release(); }
