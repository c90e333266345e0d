#pragma once

#include "entry/showcase.h"
#include "proxies/jclassproxy.h"
#include "qx/arrayowner.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <functional>
#include <limits>
#include <type_traits>

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
    const char* name;
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

constexpr int noFault = std::numeric_limits<int>::max();

/// Makes every JNI call of a native fail in turn. Afterwards the native has either done its work or left a Java
/// exception and a neutral result, and no reference, pinned block or array is left over.
class FaultSweep : public ShowcaseTest {
protected:
    void SetUp() override {
        ShowcaseTest::SetUp();
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

    void sweep(const std::vector<Native>& natives) {
        for (const Native& swept : natives) {
            SCOPED_TRACE(swept.name);
            right_ = {};
            int n = noFault;
            for (bool struck = true; struck && !HasFailure(); n = n == noFault ? 1 : n + 1) {
                SCOPED_TRACE("failing call " + std::to_string(n));
                struck = survives(swept, n) || n == noFault;
            }
            EXPECT_TRUE(n > 2 || HasFailure()) << "no call that can fail";
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
            const qxArrayOwner form(qxSerialize(arrayIn(env, gives == Gives::edit ? scratch_ : result)));
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
            Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlTerminateInstance(env, nullptr, result);
        }
        if (gives == Gives::edit || (gives == Gives::end && thrown)) {
            qxDestroyArray(arrayIn(env, scratch_));
        }
    }

    /// Calls a native as if nothing of the library had been used yet, with its n-th JNI call failing; false when it
    /// makes fewer. A call without a fault comes first.
    bool survives(const Native& swept, int n) {
        disposeClassProxies(env);
        forgetStartup();
        const std::size_t arrays = qxLiveArrayCount();
        const JniCounter kept(env);
        swept.prepare();
        const bool scratches = swept.gives == Gives::edit || swept.gives == Gives::end;
        scratch_ = scratches ? newHandle(env, qxDuplicateArray(arrayIn(env, original_))) : nullptr;
        const JniCounter counter(env);
        jobject result = nullptr;
        bool struck = false;
        {
            const Faults faults(env, n);
            result = swept.call();
            struck = faults.struck();
        }
        const int localReferences = counter.localReferences() - (result == nullptr ? 0 : 1);
        right_.localReferences = n == noFault ? localReferences : right_.localReferences;
        EXPECT_LE(localReferences, right_.localReferences);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        const bool thrown = env->ExceptionCheck() != JNI_FALSE;
        if (!struck && swept.gives != Gives::failure) {
            expectNoThrow(env);
        }
        env->ExceptionClear();
        EXPECT_FALSE(thrown && result != nullptr) << "a result and an exception";
        EXPECT_TRUE(thrown || result != nullptr || swept.gives == Gives::nothing || scratches) << "neither of them";
        if (!thrown) {
            expectRight(swept.gives, result);
        }
        release(swept.gives, result, thrown);
        swept.undo();
        disposeClassProxies(env);
        EXPECT_EQ(kept.globalReferences(), 0);
        EXPECT_EQ(kept.weakReferences(), 0);
        EXPECT_EQ(qxLiveArrayCount(), arrays);
        return struck;
    }

    /// What the call without a fault gave and left.
    struct Right {
        int localReferences = 0;
        jobject object = nullptr;
        std::string bytes;
    } right_;
    std::vector<qxArrayOwner> owners_;
};

}  // namespace nativevrl::test
