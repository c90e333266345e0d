#include "support/race.h"

#include "support/jnicounter.h"
#include "support/jvm.h"

#include <atomic>
#include <thread>

namespace nativevrl::test {

namespace {

class HoldInFindClass : public JniProbe {
public:
    HoldInFindClass(JNIEnv* env, std::atomic<bool>& inside, std::atomic<bool>& otherArrives)
        : JniProbe(env), inside_(inside), otherArrives_(otherArrives) {}

    bool admits(const JniFunction& function) override {
        if (function.slot == jniSlot(&JNINativeInterface_::FindClass) && !inside_.exchange(true)) {
            while (!otherArrives_) {
                std::this_thread::yield();
            }
            // Long enough for the other to come to the lock, most of the time.
            for (int turn = 0; turn < 1000; ++turn) {
                std::this_thread::yield();
            }
        }
        return true;
    }

private:
    std::atomic<bool>& inside_;
    std::atomic<bool>& otherArrives_;
};

}  // namespace

int raceInFindClass(JNIEnv* env, const std::function<void(JNIEnv*)>& ask) {
    std::atomic<bool> inside{false};
    std::atomic<bool> otherArrives{false};
    int lookUps = 0;
    std::thread other([&] {
        onAttachedThread([&](JNIEnv* otherEnv) {
            const JniCounter counter(otherEnv);
            while (!inside) {
                std::this_thread::yield();
            }
            otherArrives = true;
            ask(otherEnv);
            lookUps = counter.calls(&JNINativeInterface_::FindClass);
        });
    });
    {
        const HoldInFindClass hold(env, inside, otherArrives);
        ask(env);
    }
    other.join();
    return lookUps;
}

}  // namespace nativevrl::test
