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

/// The function of each primitive type.
#define OF_TYPES(Prefix, Suffix)                                                                  \
    &Table::Prefix##Boolean##Suffix, &Table::Prefix##Byte##Suffix, &Table::Prefix##Char##Suffix,  \
        &Table::Prefix##Short##Suffix, &Table::Prefix##Int##Suffix, &Table::Prefix##Long##Suffix, \
        &Table::Prefix##Float##Suffix, &Table::Prefix##Double##Suffix

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
          &Table::CallStaticObjectMethodV, OF_TYPES(New, Array)>(table);
    watch<Effect::makesLocal, Failure::never, &Table::GetObjectClass, &Table::GetSuperclass, &Table::ExceptionOccurred>(
        table);
    watch<Effect::none, Failure::throws, &Table::GetMethodID, &Table::GetStaticMethodID, &Table::GetFieldID,
          &Table::GetStaticFieldID, &Table::SetObjectArrayElement>(table);
    watch<Effect::none, Failure::never, &Table::IsInstanceOf, &Table::GetArrayLength, &Table::GetStringLength,
          &Table::ExceptionCheck, &Table::ExceptionClear, &Table::Throw, &Table::ThrowNew>(table);
}

void watchCalls(Table& table) {
    watch<Effect::none, Failure::throws, &Table::CallVoidMethodA, &Table::CallVoidMethodV, OF_TYPES(Call, MethodA),
          OF_TYPES(Call, MethodV), &Table::CallStaticVoidMethodA, OF_TYPES(CallStatic, MethodA)>(table);
}

void watchPins(Table& table) {
    watch<Effect::pins, Failure::gives, OF_TYPES(Get, ArrayElements), &Table::GetPrimitiveArrayCritical,
          &Table::GetStringCritical, &Table::GetStringChars, &Table::GetStringUTFChars>(table);
    watch<Effect::unpins, Failure::never, OF_TYPES(Release, ArrayElements), &Table::ReleasePrimitiveArrayCritical,
          &Table::ReleaseStringCritical, &Table::ReleaseStringChars, &Table::ReleaseStringUTFChars>(table);
    watch<Effect::none, Failure::never, OF_TYPES(Set, ArrayRegion), OF_TYPES(Get, ArrayRegion)>(table);
}

#undef OF_TYPES

Table makeProbedTable(JNIEnv* env) {
    machineTable = env->functions;
    Table table = *env->functions;
    watchReferences(table);
    watchObjects(table);
    watchCalls(table);
    watchPins(table);
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
