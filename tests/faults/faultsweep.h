#pragma once

#include "entry/showcase.h"
#include "proxies/jclassproxy.h"
#include "qx/arrayowner.h"
#include "support/heapblocks.h"

#include "support/natives.h"

#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace nativevrl::test {

/// What a native gives or does, and so what is right when it throws nothing.
enum class Gives {
    nothing,
    failure,   ///< always throws
    object,    ///< the same value each time
    address,   ///< a NativePtr that nothing is owed for
    array,     ///< a NativePtr that owes an array, the same each time
    instance,  ///< a NativePtr of a component instance
    wrapper,   ///< a Java object that owns an array
    edit,      ///< changes the scratch array in the same way each time
    end,       ///< destroys the scratch array
};

struct Native {
    std::string name;
    Gives gives;
    std::function<jobject()> call;
    /// Makes what one call uses up.
    std::function<void()> prepare = [] {};
    /// Takes back what the call did, whether or not it threw.
    std::function<void()> undo = [] {};
};

/// Fails calls as JniFaults does, with two exceptions. One that stores a new wrapper is let through, since the array
/// would go with the wrapper, whenever Java collects it. And the chunks of a stream are all alike: three will do.
class Faults : public JniFaults {
public:
    using JniFaults::JniFaults;
    bool admits(const JniFunction& function) override {
        using Table = JNINativeInterface_;
        const bool stores = function.slot == jniSlot(&Table::CallVoidMethodA);
        const bool reads = function.slot == jniSlot(&Table::CallIntMethodA) ||
                           function.slot == jniSlot(&Table::NewByteArray) ||
                           function.slot == jniSlot(&Table::GetByteArrayElements);
        return stores || (reads && ++reads_ > 9) || JniFaults::admits(function);
    }

private:
    int reads_ = 0;
};

/// What a native meets: a JNI call that fails, or a block of the heap that is not to be had.
enum class Fault { none, jniCall, heapBlock };

/// Makes every JNI call and every block of the heap of a native fail in turn. Afterwards the native has either done its
/// work or left a Java exception and a neutral result, and no reference, pinned block, array or block of the heap is
/// left over.
class FaultSweep : public ShowcaseTest {
protected:
    void SetUp() override {
        ShowcaseTest::SetUp();
        // Loads the class of the failures: what the machine's own code does for that is none of a native's doing.
        newObject(env, "com/norvane/toolbox/loomkit/NVException", "(Ljava/lang/String;)V", {objectArgument(nullptr)});
        matrix_ = owned(qxCreateDoubleMatrix(2, 3, qxCOMPLEX));
        const char* fields[] = {"first", "second"};
        record_ = owned(qxCreateStructMatrix(1, 1, 2, fields));
        cell_ = owned(qxCreateCellMatrix(1, 2));
        qxSetCell(arrayIn(env, cell_), 1, qxCreateString("held"));
        text_ = owned(qxCreateString("some text"));
        sparse_ = owned(qxCreateSparse(4, 4, 2, qxREAL));
    }

    void TearDown() override {
        owners_.clear();
        ShowcaseTest::TearDown();
    }

    /// A call of a native with arguments; one without an object for a result gives null.
    template <typename Function, typename... Arguments>
    std::function<jobject()> native(Function function, Arguments... arguments) {
        return [=]() -> jobject {
            if constexpr (std::is_convertible_v<decltype(function(env, nullptr, arguments...)), jobject>) {
                return function(env, nullptr, arguments...);
            } else {
                static_cast<void>(function(env, nullptr, arguments...));
                return nullptr;
            }
        };
    }

    jobjectArray objects(const std::vector<jobject>& elements) {
        return objectArray(env, "java/lang/Object", elements);
    }

    /// `ownFailure` is the class of the exceptions in which the natives' text reports any failure, that of memory too.
    void sweep(const std::vector<Native>& natives, const char* ownFailure = "java/lang/OutOfMemoryError") {
        ownFailure_ = ownFailure;
        for (const Native& swept : natives) {
            SCOPED_TRACE(swept.name);
            right_ = {};
            // What the first call sets up once for the process is none of the others'.
            for (const bool isLast : {false, true}) {
                survives(swept, Fault::none, 0);
                right_.isSettled = true;
                right_.isKnown = isLast;
            }
            sweepWith(swept, Fault::jniCall);
            sweepWith(swept, Fault::heapBlock);
        }
    }

    jobject matrix_ = nullptr;
    jobject record_ = nullptr;
    jobject cell_ = nullptr;
    jobject text_ = nullptr;
    jobject sparse_ = nullptr;
    jobject original_ = nullptr;  ///< what the scratch array starts as
    jobject scratch_ = nullptr;

private:
    void sweepWith(const Native& swept, Fault fault) {
        bool struck = true;
        // Behind the first hundreds, what fails is more of the same.
        for (int n = 1; struck && !HasFailure(); n += 1 + n / 100) {
            SCOPED_TRACE((fault == Fault::jniCall ? "failing call " : "refused block ") + std::to_string(n));
            struck = survives(swept, fault, n);
            EXPECT_TRUE(struck || n > 1 || fault == Fault::heapBlock) << "no call that can fail";
            // The next fault lets most of the native run; all of it need not run each time.
            if (n < 20 || n % 10 == 0) {
                survives(swept, Fault::none, 0);
            }
        }
    }

    /// A handle of an array that the fixture destroys.
    jobject owned(qxArray* array) {
        owners_.emplace_back(array);
        return newHandle(env, array);
    }

    bool deepEquals(jobject one, jobject other) {
        jclass cls = findClass(env, "java/util/Objects");
        jmethodID equals = env->GetStaticMethodID(cls, "deepEquals", "(Ljava/lang/Object;Ljava/lang/Object;)Z");
        const bool same = env->CallStaticBooleanMethod(cls, equals, one, other) != JNI_FALSE;
        requireNoThrow(env, "Objects.deepEquals");
        return same;
    }

    /// Compares what was given with what the first call gave.
    void expectRight(Gives gives, jobject result) {
        if (gives == Gives::array || gives == Gives::edit) {
            const qxArray* array = arrayIn(env, gives == Gives::edit ? scratch_ : result);
            ASSERT_NE(array, nullptr) << "a handle of nothing";
            const qxArrayOwner form(qxSerialize(array));
            const std::string bytes(static_cast<const char*>(form->realData()), qxGetNumberOfElements(form.get()));
            right_.bytes = right_.bytes.empty() ? bytes : right_.bytes;
            EXPECT_EQ(bytes, right_.bytes);
        } else if (gives == Gives::object) {
            right_.object = right_.object == nullptr ? env->NewLocalRef(result) : right_.object;
            EXPECT_TRUE(deepEquals(result, right_.object)) << describe(env, result);
        }
    }

    void release(Gives gives, jobject result, bool thrown) {
        if (gives == Gives::array && result != nullptr) {
            qxDestroyArray(arrayIn(env, result));
        } else if (gives == Gives::wrapper && result != nullptr) {
            callVoid(env, result, "close", "()V");
        } else if (gives == Gives::instance && result != nullptr) {
            NVKRT(vrlTerminateInstance)(env, nullptr, result);
        }
        if (gives == Gives::edit || (gives == Gives::end && thrown)) {
            qxDestroyArray(arrayIn(env, scratch_));
        }
    }

    /// What came of a call.
    struct Outcome {
        jobject result = nullptr;
        bool struck = false;  ///< whether it came to the fault
        bool thrown = false;
        int localReferences = 0;  ///< that are left, but for the result
    };

    /// Calls a native, whose n-th call or block fails. A native exception that leaves it is a failure of the test.
    Outcome callWithFault(const Native& swept, Fault fault, int n) {
        Outcome outcome;
        const JniCounter counter(env);
        const Faults calls(env, fault == Fault::jniCall ? n : std::numeric_limits<int>::max());
        const loomkit::test::HeapWatch blocks(fault == Fault::heapBlock ? static_cast<std::size_t>(n) : 0,
                                              loomkit::test::Refusal::once);
        try {
            outcome.result = swept.call();
        } catch (const std::exception& failure) {
            const loomkit::test::HeapPause done;
            ADD_FAILURE() << typeid(failure).name() << " left the native: " << failure.what();
        }
        const loomkit::test::HeapPause done;
        outcome.struck = fault == Fault::jniCall ? calls.struck() : blocks.hasRefused();
        outcome.localReferences = counter.localReferences() - (outcome.result == nullptr ? 0 : 1);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        return outcome;
    }

    /// Takes the exception that is pending; whether there was one.
    bool takeException(const Native& swept, Fault fault, bool struck) {
        if (env->ExceptionCheck() == JNI_FALSE) {
            return false;
        }
        if (!struck && swept.gives != Gives::failure) {
            expectNoThrow(env);
            return true;
        }
        jthrowable thrown = env->ExceptionOccurred();
        env->ExceptionClear();
        const std::string name = classNameOf(env, thrown);
        env->DeleteLocalRef(thrown);
        if (fault == Fault::heapBlock && swept.gives != Gives::failure) {
            EXPECT_TRUE(name == "java/lang/OutOfMemoryError" || name == ownFailure_) << name;
        }
        return true;
    }

    bool usesScratch(const Native& swept) { return swept.gives == Gives::edit || swept.gives == Gives::end; }

    /// A native ends with a result that is right or with an exception, not with both.
    void judge(const Native& swept, Fault fault, const Outcome& outcome) {
        EXPECT_FALSE(outcome.thrown && outcome.result != nullptr) << "a result and an exception";
        // An array that can't be made may also be null, or a handle of nothing.
        const bool isNothing = fault == Fault::heapBlock && outcome.struck && swept.gives == Gives::array &&
                               !outcome.thrown &&
                               (outcome.result == nullptr || arrayIn(env, outcome.result) == nullptr);
        EXPECT_TRUE(outcome.thrown || outcome.result != nullptr || swept.gives == Gives::nothing ||
                    usesScratch(swept) || isNothing)
            << "neither of them";
        if (!outcome.thrown && !isNothing) {
            expectRight(swept.gives, outcome.result);
        }
    }

    void expectNothingLeft(const Outcome& outcome, const loomkit::test::HeapLedger& ledger) {
        if (!right_.isKnown) {
            right_.localReferences = outcome.localReferences;
            right_.blocks = ledger.held();
        }
        EXPECT_LE(outcome.localReferences, right_.localReferences);
        EXPECT_LE(ledger.held(), right_.blocks) << "blocks of the heap are left, for\n" << ledger.holders();
    }

    /// Calls a native as if nothing of the library had been used yet, with its n-th JNI call or block failing; false
    /// when it needs fewer. The calls without a fault that come first tell what is right.
    bool survives(const Native& swept, Fault fault, int n) {
        disposeClassProxies(env);
        forgetStartup();
        const std::size_t arrays = qxLiveArrayCount();
        const JniCounter kept(env);
        swept.prepare();
        scratch_ = usesScratch(swept) ? newHandle(env, qxDuplicateArray(arrayIn(env, original_))) : nullptr;
        const loomkit::test::HeapLedger ledger;
        Outcome outcome = callWithFault(swept, fault, n);
        outcome.thrown = takeException(swept, fault, outcome.struck);
        judge(swept, fault, outcome);
        release(swept.gives, outcome.result, outcome.thrown);
        swept.undo();
        disposeClassProxies(env);
        expectNothingLeft(outcome, ledger);
        EXPECT_TRUE(kept.globalReferences() == 0 || !right_.isSettled) << kept.globalReferences();
        EXPECT_EQ(kept.weakReferences(), 0);
        EXPECT_EQ(qxLiveArrayCount(), arrays);
        return outcome.struck;
    }

    /// What the calls without a fault gave and left.
    struct Right {
        bool isSettled = false;  ///< what is set up once for the process is there
        bool isKnown = false;
        int localReferences = 0;
        std::size_t blocks = 0;
        jobject object = nullptr;
        std::string bytes;
    } right_;
    std::string ownFailure_;
    std::vector<qxArrayOwner> owners_;
};

}  // namespace nativevrl::test
