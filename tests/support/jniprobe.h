#pragma once

#include <jni.h>

#include <cstddef>

/// Eyes on the JNI calls of one thread: while a probe lives, the thread's environment has a function table that reports
/// each call to all probes of the thread before it reaches the virtual machine. Blocks of the heap that are asked for
/// inside a call are refused to nobody.
namespace nativevrl::test {

/// What a call does to what the caller owns.
enum class JniEffect {
    none,
    makesLocal,
    deletesLocal,
    makesGlobal,
    deletesGlobal,
    makesWeak,
    deletesWeak,
    pushesFrame,
    popsFrame,
    pins,
    unpins,
};

/// How a call fails when it does.
enum class JniFailure {
    never,
    gives,   ///< gives null and leaves no exception
    throws,  ///< gives null or 0 with an exception pending
};

/// One function of the table.
struct JniFunction {
    std::size_t slot;  ///< place in the function table, zero-based
    JniEffect effect;
    JniFailure failure;
};

/// Slot of a member of the function table.
template <typename Function>
std::size_t jniSlot(Function JNINativeInterface_::*member) {
    static const JNINativeInterface_ table = {};
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&(table.*member)) -
                                    reinterpret_cast<const char*>(&table)) /
           sizeof(void*);
}

class JniProbe {
public:
    /// Installs the probe on the environment of the calling thread.
    explicit JniProbe(JNIEnv* env);
    virtual ~JniProbe();
    JniProbe(const JniProbe&) = delete;
    JniProbe& operator=(const JniProbe&) = delete;

    /// Whether the calling thread has any probe.
    static bool installed();

    /// Whether the thread is inside of a call, so that what calls now is a native that Java runs meanwhile.
    static bool isInsideCall();

    /// Before the call: false makes it fail, as its `failure` says, without reaching the virtual machine.
    virtual bool admits(const JniFunction&) { return true; }
    /// After a call that was admitted; `gave` is false for a null result.
    virtual void saw(const JniFunction&, bool gave) { static_cast<void>(gave); }

protected:
    JNIEnv* env() const { return env_; }
    /// The table of the virtual machine: calls through it are not probed.
    static const JNINativeInterface_* machine();

    /// Whether calls of this slot are reported at all.
    static bool watches(std::size_t slot);

private:
    friend struct JniDispatch;
    JNIEnv* env_;
    JniProbe* next_;
};

}  // namespace nativevrl::test
