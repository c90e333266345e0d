#include "support/jniprobe.h"

#include "support/heapblocks.h"

#include <array>
#include <type_traits>

namespace nativevrl::test {

namespace {

using Table = JNINativeInterface_;

constexpr std::size_t slotCount = sizeof(Table) / sizeof(void*);

/// Innermost probe of the thread.
thread_local JniProbe* innermost = nullptr;
/// Calls of the thread that the virtual machine is at work on, one inside of the other.
thread_local int runningCalls = 0;

struct RunningCall {
    RunningCall() { ++runningCalls; }
    ~RunningCall() { --runningCalls; }
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
};

/// Table of the virtual machine, the same for all threads.
const Table* machineTable = nullptr;
std::array<bool, slotCount> watchedSlots = {};

}  // namespace

struct JniDispatch {
    static bool admit(const JniFunction& function) {
        bool admitted = true;
        for (JniProbe* probe = innermost; probe != nullptr; probe = probe->next_) {
            admitted = probe->admits(function) && admitted;
        }
        return admitted;
    }

    static void report(const JniFunction& function, bool gave) {
        for (JniProbe* probe = innermost; probe != nullptr; probe = probe->next_) {
            probe->saw(function, gave);
        }
    }
};

namespace {

/// The function that stands in the table for the member, with the member's own signature.
template <auto Member, JniEffect Effect, JniFailure Failure>
struct Watched;

template <typename Result, typename... Arguments, Result (JNICALL* Table::*Member)(JNIEnv*, Arguments...),
          JniEffect Effect, JniFailure Failure>
struct Watched<Member, Effect, Failure> {
    static Result JNICALL call(JNIEnv* env, Arguments... arguments) {
        static const JniFunction function{jniSlot(Member), Effect, Failure};
        const loomkit::test::HeapPause inTheMachine;
        if (!JniDispatch::admit(function)) {
            return Result();
        }
        const auto run = [&] {
            const RunningCall running;
            return (machineTable->*Member)(env, arguments...);
        };
        if constexpr (std::is_void_v<Result>) {
            run();
            JniDispatch::report(function, true);
        } else {
            Result result = run();
            JniDispatch::report(function, result != Result());
            return result;
        }
    }
};

template <JniEffect Effect, JniFailure Failure, auto... Members>
void watch(Table& table) {
    ((table.*Members = &Watched<Members, Effect, Failure>::call, watchedSlots[jniSlot(Members)] = true), ...);
}

using Effect = JniEffect;
using Failure = JniFailure;

void watchReferences(Table& table) {
    watch<Effect::makesLocal, Failure::gives, &Table::NewLocalRef>(table);
    watch<Effect::deletesLocal, Failure::never, &Table::DeleteLocalRef>(table);
    watch<Effect::pushesFrame, Failure::never, &Table::PushLocalFrame>(table);
    watch<Effect::popsFrame, Failure::never, &Table::PopLocalFrame>(table);
    watch<Effect::makesGlobal, Failure::gives, &Table::NewGlobalRef>(table);
    watch<Effect::deletesGlobal, Failure::never, &Table::DeleteGlobalRef>(table);
    watch<Effect::makesWeak, Failure::gives, &Table::NewWeakGlobalRef>(table);
    watch<Effect::deletesWeak, Failure::never, &Table::DeleteWeakGlobalRef>(table);
}

void watchObjects(Table& table) {
    watch<Effect::makesLocal, Failure::throws, &Table::FindClass, &Table::NewObjectA, &Table::NewObjectV,
          &Table::NewString, &Table::NewStringUTF, &Table::NewObjectArray, &Table::GetObjectArrayElement,
          &Table::CallObjectMethodA, &Table::CallObjectMethodV, &Table::CallStaticObjectMethodA,
          &Table::CallStaticObjectMethodV, &Table::NewBooleanArray, &Table::NewByteArray, &Table::NewCharArray,
          &Table::NewShortArray, &Table::NewIntArray, &Table::NewLongArray, &Table::NewFloatArray,
          &Table::NewDoubleArray>(table);
    watch<Effect::makesLocal, Failure::never, &Table::GetObjectClass, &Table::GetSuperclass, &Table::ExceptionOccurred>(
        table);
    watch<Effect::none, Failure::throws, &Table::GetMethodID, &Table::GetStaticMethodID, &Table::GetFieldID,
          &Table::GetStaticFieldID, &Table::SetObjectArrayElement>(table);
    watch<Effect::none, Failure::never, &Table::IsInstanceOf, &Table::GetArrayLength, &Table::GetStringLength,
          &Table::ExceptionCheck, &Table::ExceptionClear, &Table::Throw, &Table::ThrowNew>(table);
}

void watchCalls(Table& table) {
    watch<Effect::none, Failure::throws, &Table::CallVoidMethodA, &Table::CallBooleanMethodA, &Table::CallByteMethodA,
          &Table::CallCharMethodA, &Table::CallShortMethodA, &Table::CallIntMethodA, &Table::CallLongMethodA,
          &Table::CallFloatMethodA, &Table::CallDoubleMethodA, &Table::CallVoidMethodV, &Table::CallBooleanMethodV,
          &Table::CallByteMethodV, &Table::CallCharMethodV, &Table::CallShortMethodV, &Table::CallIntMethodV,
          &Table::CallLongMethodV, &Table::CallFloatMethodV, &Table::CallDoubleMethodV>(table);
    watch<Effect::none, Failure::throws, &Table::CallStaticVoidMethodA, &Table::CallStaticBooleanMethodA,
          &Table::CallStaticByteMethodA, &Table::CallStaticCharMethodA, &Table::CallStaticShortMethodA,
          &Table::CallStaticIntMethodA, &Table::CallStaticLongMethodA, &Table::CallStaticFloatMethodA,
          &Table::CallStaticDoubleMethodA>(table);
}

void watchPins(Table& table) {
    watch<Effect::pins, Failure::gives, &Table::GetBooleanArrayElements, &Table::GetByteArrayElements,
          &Table::GetCharArrayElements, &Table::GetShortArrayElements, &Table::GetIntArrayElements,
          &Table::GetLongArrayElements, &Table::GetFloatArrayElements, &Table::GetDoubleArrayElements,
          &Table::GetPrimitiveArrayCritical, &Table::GetStringCritical, &Table::GetStringChars,
          &Table::GetStringUTFChars>(table);
    watch<Effect::unpins, Failure::never, &Table::ReleaseBooleanArrayElements, &Table::ReleaseByteArrayElements,
          &Table::ReleaseCharArrayElements, &Table::ReleaseShortArrayElements, &Table::ReleaseIntArrayElements,
          &Table::ReleaseLongArrayElements, &Table::ReleaseFloatArrayElements, &Table::ReleaseDoubleArrayElements,
          &Table::ReleasePrimitiveArrayCritical, &Table::ReleaseStringCritical, &Table::ReleaseStringChars,
          &Table::ReleaseStringUTFChars>(table);
}

void watchRegions(Table& table) {
    watch<Effect::none, Failure::never, &Table::SetBooleanArrayRegion, &Table::SetByteArrayRegion,
          &Table::SetCharArrayRegion, &Table::SetShortArrayRegion, &Table::SetIntArrayRegion,
          &Table::SetLongArrayRegion, &Table::SetFloatArrayRegion, &Table::SetDoubleArrayRegion>(table);
    watch<Effect::none, Failure::never, &Table::GetBooleanArrayRegion, &Table::GetByteArrayRegion,
          &Table::GetCharArrayRegion, &Table::GetShortArrayRegion, &Table::GetIntArrayRegion,
          &Table::GetLongArrayRegion, &Table::GetFloatArrayRegion, &Table::GetDoubleArrayRegion>(table);
}

Table makeProbedTable(JNIEnv* env) {
    machineTable = env->functions;
    Table table = *env->functions;
    watchReferences(table);
    watchObjects(table);
    watchCalls(table);
    watchPins(table);
    watchRegions(table);
    return table;
}

const Table& probedTable(JNIEnv* env) {
    static const Table table = makeProbedTable(env);
    return table;
}

}  // namespace

JniProbe::JniProbe(JNIEnv* env) : env_(env), next_(innermost) {
    const Table& table = probedTable(env);
    innermost = this;
    env->functions = &table;
}

JniProbe::~JniProbe() {
    innermost = next_;
    if (innermost == nullptr) {
        env_->functions = machineTable;
    }
}

bool JniProbe::installed() { return innermost != nullptr; }

bool JniProbe::isInsideCall() { return runningCalls > 0; }

const JNINativeInterface_* JniProbe::machine() { return machineTable; }

bool JniProbe::watches(std::size_t slot) { return watchedSlots.at(slot); }

}  // namespace nativevrl::test
