#pragma once

#include "support/jniprobe.h"

#include <array>
#include <stdexcept>
#include <vector>

namespace nativevrl::test {

/// Counts the JNI calls of the thread while it lives. The balances are what was made less what was given back: 0 when
/// nothing is left over.
class JniCounter : public JniProbe {
public:
    explicit JniCounter(JNIEnv* env) : JniProbe(env) {}

    /// Local references that are left. Those of natives that Java runs inside of a call go with the natives, and are
    /// not counted.
    int localReferences() const { return balance(JniEffect::makesLocal, JniEffect::deletesLocal); }
    int globalReferences() const { return balance(JniEffect::makesGlobal, JniEffect::deletesGlobal); }
    int weakReferences() const { return balance(JniEffect::makesWeak, JniEffect::deletesWeak); }
    /// How often elements or characters were fetched.
    int pins() const { return effects_[static_cast<std::size_t>(JniEffect::pins)]; }
    /// Element blocks and string characters that are held.
    int pinnedBlocks() const { return balance(JniEffect::pins, JniEffect::unpins); }

    /// Calls of one function: `calls(&JNINativeInterface_::GetIntArrayElements)`.
    template <typename Function>
    int calls(Function JNINativeInterface_::*member) const {
        const std::size_t slot = jniSlot(member);
        if (!watches(slot)) {
            throw std::logic_error("this function of the table is not watched");
        }
        return calls_[slot];
    }

    bool admits(const JniFunction&) override { return true; }
    void saw(const JniFunction& function, bool gave) override {
        ++calls_[function.slot];
        if (isInsideCall() && isLocal(function.effect)) {
            return;
        }
        if (function.effect == JniEffect::pushesFrame) {
            frames_.push_back(localReferences());
        } else if (function.effect == JniEffect::popsFrame) {
            effects_[static_cast<std::size_t>(JniEffect::makesLocal)] += frames_.back() - localReferences() + gave;
            frames_.pop_back();
        } else if (gave) {
            ++effects_[static_cast<std::size_t>(function.effect)];
        }
    }

private:
    static bool isLocal(JniEffect effect) {
        return effect == JniEffect::makesLocal || effect == JniEffect::deletesLocal ||
               effect == JniEffect::pushesFrame || effect == JniEffect::popsFrame;
    }

    int balance(JniEffect made, JniEffect ended) const {
        return effects_[static_cast<std::size_t>(made)] - effects_[static_cast<std::size_t>(ended)];
    }

    std::array<int, sizeof(JNINativeInterface_) / sizeof(void*)> calls_ = {};
    /// References that were left when each open frame began.
    std::vector<int> frames_;
    std::array<int, static_cast<std::size_t>(JniEffect::unpins) + 1> effects_ = {};
};

}  // namespace nativevrl::test
