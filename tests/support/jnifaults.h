#pragma once

#include "support/jniprobe.h"

#include <optional>

namespace nativevrl::test {

/// Makes one JNI call of the thread fail as a virtual machine without memory makes it fail: null, and
/// java.lang.OutOfMemoryError pending where the call raises one.
class JniFaults : public JniProbe {
public:
    /// The n-th call (from 1) that can fail.
    JniFaults(JNIEnv* env, int n);

    /// The n-th call (from 1) of one function: `JniFaults(env, &JNINativeInterface_::NewDoubleArray, 2)`.
    template <typename Function>
    JniFaults(JNIEnv* env, Function JNINativeInterface_::*member, int n) : JniFaults(env, n) {
        only_ = jniSlot(member);
    }

    ~JniFaults() override;

    /// Whether the call that was to fail came up.
    bool struck() const { return remaining_ <= 0; }

    bool admits(const JniFunction& function) override;

private:
    int remaining_;
    std::optional<std::size_t> only_;
    jthrowable error_;
};

}  // namespace nativevrl::test
