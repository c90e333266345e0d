#include "testcomponent.h"

#include "jzi/javaarray.h"
#include "krt/component.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/jvmattach.h"

#include <jni.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <set>
#include <thread>

namespace {

/// As much of a virtual machine as references need. References are numbers; one environment serves every thread.
class FakeMachine {
public:
    FakeMachine() {
        current = this;
        environmentTable_.NewGlobalRef = [](JNIEnv*, jobject object) -> jobject {
            return object == nullptr ? nullptr : current->newReference();
        };
        environmentTable_.DeleteGlobalRef = [](JNIEnv*, jobject reference) { current->live.erase(reference); };
        environmentTable_.ExceptionCheck = [](JNIEnv*) -> jboolean { return current->pending ? JNI_TRUE : JNI_FALSE; };
        environmentTable_.ExceptionOccurred = [](JNIEnv*) -> jthrowable { return nullptr; };
        environmentTable_.ExceptionClear = [](JNIEnv*) { current->pending = false; };
        environment_.functions = &environmentTable_;
        machineTable_.GetEnv = [](JavaVM*, void** env, jint) -> jint {
            *env = current->attached && !current->gone ? &current->environment_ : nullptr;
            return *env == nullptr ? JNI_EDETACHED : JNI_OK;
        };
        machineTable_.AttachCurrentThread = [](JavaVM*, void** env, void*) -> jint {
            ++current->attachments;
            *env = &current->environment_;
            return current->gone ? JNI_ERR : JNI_OK;
        };
        machineTable_.DetachCurrentThread = [](JavaVM*) -> jint {
            ++current->detachments;
            return JNI_OK;
        };
        machine_.functions = &machineTable_;
    }

    JavaVM* machine() { return &machine_; }
    jobject newReference() {
        auto* reference = reinterpret_cast<jobject>(++last_);
        live.insert(reference);
        return reference;
    }

    std::set<jobject> live;
    bool attached = true;
    bool gone = false;
    bool pending = false;
    int attachments = 0;
    int detachments = 0;

private:
    static FakeMachine* current;
    JNINativeInterface_ environmentTable_{};
    JNIEnv environment_{};
    JNIInvokeInterface_ machineTable_{};
    JavaVM machine_{};
    std::uintptr_t last_ = 0x1000;
};

FakeMachine* FakeMachine::current = nullptr;

class FakeConfig : public jzi::JavaVMConfig {
public:
    explicit FakeConfig(JavaVM* machine) : machine_(machine) {}
    bool hasJavaVM() override { return machine_ != nullptr; }
    jclass loadOJI(const std::string&, const std::string&) override { throw JavaVMConfigException("not here"); }
    JavaVM* getJavaVM() override { return machine_; }
    std::string getJVMLocation() override { return {}; }

private:
    JavaVM* machine_;
};

class JavaArray : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(vrlSetZvmState(4, boost::make_shared<FakeConfig>(machine.machine()))); }
    void TearDown() override { vrlSetZvmState(4, boost::make_shared<FakeConfig>(nullptr)); }

    FakeMachine machine;
};

TEST_F(JavaArray, OwnsItsReferenceUntilTheLastHeaderGoes) {
    qxArrayOwner array(jzi::makeJavaArray(machine.newReference()));
    qxArrayOwner shared(qxCreateSharedDataCopy(array.get()));
    qxArrayOwner deep(qxDuplicateArray(array.get()));
    EXPECT_TRUE(ojIsJavaArray(deep.get()));
    EXPECT_STREQ(qxGetSubclass(deep.get()), "java_object");
    EXPECT_EQ(machine.live.size(), 1U);
    jobject taken = mJava2jObject(shared.get());
    EXPECT_EQ(machine.live.count(taken), 1U);
    EXPECT_NE(taken, jzi::heldJavaObject(array.get()));
    machine.live.erase(taken);
    array.reset();
    shared.reset();
    EXPECT_EQ(machine.live.size(), 1U);
    deep.reset();
    EXPECT_TRUE(machine.live.empty());
}

TEST_F(JavaArray, AttachesAThreadForTheDeletionOnly) {
    qxArrayOwner array(jzi::makeJavaArray(machine.newReference()));
    machine.attached = false;
    std::thread([&] { array.reset(); }).join();
    EXPECT_TRUE(machine.live.empty());
    EXPECT_EQ(machine.attachments, 1);
    EXPECT_EQ(machine.detachments, 1);
}

TEST_F(JavaArray, IsLeftToAMachineThatIsGone) {
    qxArrayOwner array(jzi::makeJavaArray(machine.newReference()));
    machine.gone = true;
    EXPECT_EQ(mJava2jObject(array.get()), nullptr);
    array.reset();
    EXPECT_EQ(machine.live.size(), 1U);
    EXPECT_EQ(machine.detachments, 0);
}

TEST_F(JavaArray, OfNullHoldsNoneAndIsNothingElse) {
    const qxArrayOwner array(jzi::makeJavaArray(nullptr));
    EXPECT_TRUE(ojIsJavaArray(array.get()));
    EXPECT_EQ(mJava2jObject(array.get()), nullptr);
    const qxArrayOwner others[] = {nullptr, qxArrayOwner(scalar(1)),
                                   qxArrayOwner(qxCreateOpaque("other", nullptr, nullptr))};
    for (const qxArrayOwner& other : others) {
        EXPECT_FALSE(ojIsJavaArray(other.get()));
        EXPECT_EQ(mJava2jObject(other.get()), nullptr);
    }
}

TEST_F(JavaArray, ComesBackFromAFunctionOverTheSameObject) {
    TestInstance instance;
    krtInstance* object = vrlHandleToKrtInstancePtr(instance.handle());
    jobject reference = machine.newReference();
    qxArrayOwner result = instance.call1("identity", {object->javaObjectToQxArray(reference)});
    EXPECT_EQ(jzi::heldJavaObject(result.get()), reference);
    machine.live.erase(object->qxArrayToJavaObject(result.get()));
    EXPECT_EQ(machine.live.size(), 1U);
    result.reset();
    EXPECT_TRUE(machine.live.empty());
}

TEST_F(JavaArray, CallsFailWithAReasonAndLeaveNothingPending) {
    const qxArrayOwner array(jzi::makeJavaArray(machine.newReference()));
    const qxArrayOwner null(jzi::makeJavaArray(nullptr));
    const qxArrayOwner number(scalar(1));
    const auto failureOf = [](const qxArray* object) {
        qxArray* result = nullptr;
        krtFailure* failure = krtCallJava(nullptr, object, "apply", 0, nullptr, &result, "x.cpp", 1);
        std::string message = failure == nullptr ? "" : krtFailureMessage(failure);
        krtReleaseFailure(failure);
        return message;
    };
    EXPECT_EQ(failureOf(number.get()), "the method apply is called on what is no Java object");
    EXPECT_EQ(failureOf(nullptr), "the method apply is called on what is no Java object");
    EXPECT_EQ(failureOf(null.get()), "the method apply is called on null");
    machine.pending = true;
    EXPECT_EQ(failureOf(array.get()).rfind("the method apply can't be called after", 0), 0U);
    EXPECT_FALSE(machine.pending);
}

TEST_F(JavaArray, PrintHandlersLeaveNoExceptionPending) {
    int printed = 0;
    const vrlPrintHandler failing = [&](const char*) {
        machine.pending = true;
        ++printed;
        return -1;
    };
    void* handle = vrlInitializeComponentInstance(failing, failing, factoryOf(describeTestComponent()));
    vrlLoomkitFeval(handle, "print_both", 0, nullptr, 0, nullptr);
    EXPECT_EQ(printed, 2);
    EXPECT_FALSE(machine.pending);
    vrlTerminateInstanceInternal(handle);
}

TEST(VirtualMachine, IsTakenOverInOneStateOnly) {
    EXPECT_FALSE(vrlSetZvmState(4, {}));
    EXPECT_FALSE(vrlSetZvmState(1, boost::make_shared<FakeConfig>(nullptr)));
    const auto config = boost::make_shared<FakeConfig>(nullptr);
    EXPECT_TRUE(vrlSetZvmState(4, config));
    EXPECT_EQ(vrlGetJavaVMConfig(), config);
    EXPECT_EQ(jzi::makeJavaArray(reinterpret_cast<jobject>(&*config)), nullptr);
}

TEST(VirtualMachine, HasNoLocationWhereNoneIsLoaded) { EXPECT_EQ(jvm_attach::getJVMLocation(), ""); }

}  // namespace
