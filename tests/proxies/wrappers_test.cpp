#include "jzi/javaarray.h"
#include "jzi/jzi.h"
#include "proxies/jnvarrayproxy.h"
#include "proxies/jnvjavaobjectrefproxy.h"
#include "qx/arrayowner.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"

#include <functional>

namespace nativevrl::test {

namespace {

struct WrapperCase {
    const char* wrapper;
    std::function<qxArray*()> make;
};

WrapperCase numeric(qxClassID id) {
    return {"NVNumericArray", [id] { return qxCreateNumericMatrix(2, 3, id, qxREAL); }};
}

std::vector<WrapperCase> wrapperCases() {
    std::vector<WrapperCase> cases = {
        {"NVCellArray", [] { return qxCreateCellMatrix(1, 2); }},
        {"NVStructArray", [] { return qxCreateStructMatrix(1, 1, 0, nullptr); }},
        {"NVLogicalArray", [] { return qxCreateNumericMatrix(1, 1, qxLOGICAL_CLASS, qxREAL); }},
        {"NVLogicalArray", [] { return qxCreateSparseLogicalMatrix(3, 3, 1); }},
        {"NVCharArray", [] { return qxCreateString("text"); }},
        {"NVNumericArray", [] { return qxCreateSparse(3, 3, 1, qxCOMPLEX); }},
        {"NVFunctionHandle", [] { return qxCreateFunctionHandle("solve"); }},
        {"NVBuiltinArray", [] { return qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL); }},
        {"NVBuiltinArray", []() -> qxArray* { return nullptr; }},
    };
    for (int id = qxDOUBLE_CLASS; id <= qxUINT64_CLASS; ++id) {
        cases.push_back(numeric(static_cast<qxClassID>(id)));
    }
    return cases;
}

qxArray* arrayBehind(JNIEnv* env, jobject wrapper) {
    return static_cast<qxArray*>(
        addressIn(env, callObject(env, wrapper, "getValue", "()Lcom/norvane/toolbox/loomkit/internal/NativePtr;")));
}

using Wrappers = JvmTest;

TEST_F(Wrappers, AreChosenByTheClassOfTheArray) {
    for (const WrapperCase& one : wrapperCases()) {
        SCOPED_TRACE(one.wrapper);
        qxArray* array = one.make();
        const NewJNVArrayProxy wrapper(env, array);
        EXPECT_EQ(classNameOf(env, wrapper.ref()), std::string("com/norvane/toolbox/loomkit/") + one.wrapper);
        EXPECT_EQ(arrayBehind(env, wrapper.ref()), array);
        EXPECT_EQ(JNVBuiltinArrayProxy(env, wrapper.ref()).getArray(), array);
        callVoid(env, wrapper.ref(), "close", "()V");
    }
}

TEST_F(Wrappers, WhatHasNoSpecificClassIsRefusedAndStaysTheCallers) {
    int payload = 0;
    const qxArrayOwner function(qxCreateFunctionHandle("solve"));
    const qxArrayOwner opaque(qxCreateOpaque("matcher", &payload, [](void*) {}));
    const struct {
        qxArray* array;
        const char* message;
    } cases[] = {
        {function.get(), "Could not create NVArray from unsupported TAVRIX type <function-handle>"},
        {opaque.get(), "Could not create NVArray from unsupported TAVRIX type matcher"},
    };
    for (const auto& one : cases) {
        EXPECT_THROW(NewJNVBuiltinArrayProxy(env, one.array, true), tether::Exception);
        expectThrown(env, "java/lang/RuntimeException", one.message);
    }
    EXPECT_THROW(NewJNVArrayProxy(env, opaque.get()), tether::Exception);
    expectThrown(env, "java/lang/RuntimeException", "Could not create NVArray from unsupported TAVRIX type matcher");
}

TEST_F(Wrappers, OfAJavaObjectConsumeTheArray) {
    jobject object = javaString(env, u"held");
    qxArray* array = javaObjectArray(env, object);
    ASSERT_TRUE(ojIsJavaArray(array));
    const JniCounter counter(env);
    const NewJNVArrayProxy wrapper(env, array);
    EXPECT_EQ(classNameOf(env, wrapper.ref()), "com/norvane/toolbox/loomkit/NVJavaObjectRef");
    EXPECT_EQ(counter.globalReferences(), -1) << "the array's own reference went with it";
    const JObjectProxy held = JNVJavaObjectRefProxy(env, wrapper.ref()).get();
    EXPECT_NE(env->IsSameObject(held.ref(), object), JNI_FALSE);
}

TEST_F(Wrappers, OfAJavaObjectShareOneReferenceThatTheLastArrayEndsOnAnyThread) {
    jobject object = newObject(env, "java/util/ArrayList", "()V");
    jweak weak = env->NewWeakGlobalRef(object);
    qxArrayOwner array(javaObjectArray(env, object));
    env->DeleteLocalRef(object);
    qxArrayOwner shared(qxCreateSharedDataCopy(array.get()));
    qxArrayOwner deep(qxDuplicateArray(array.get()));
    EXPECT_EQ(jzi::heldJavaObject(deep.get()), jzi::heldJavaObject(array.get()));
    jclass system = findClass(env, "java/lang/System");
    jmethodID collect = env->GetStaticMethodID(system, "gc", "()V");
    const auto isCollected = [&] {
        env->CallStaticVoidMethodA(system, collect, nullptr);
        requireNoThrow(env, "System.gc");
        return env->IsSameObject(weak, nullptr) != JNI_FALSE;
    };
    array.reset();
    shared.reset();
    EXPECT_FALSE(isCollected());
    onUnknownThread([&] {
        deep.reset();
        EXPECT_EQ(currentEnv(), nullptr) << "attached for the deletion only";
    });
    EXPECT_TRUE(isCollected());
    env->DeleteWeakGlobalRef(weak);
}

TEST_F(Wrappers, OfAnArrayWithoutAnObjectAreNullAndConsumeIt) {
    const NewJNVJavaObjectRefProxy wrapper(env, qxCreateDoubleScalar(1));
    EXPECT_TRUE(wrapper.isNull());
    const NewJNVJavaObjectRefProxy ofNull(env, nullptr);
    EXPECT_TRUE(ofNull.isNull());
}

TEST_F(Wrappers, AJavaObjectThatCannotBeWrappedLeavesTheArrayToTheCaller) {
    const qxArrayOwner array(javaObjectArray(env, javaString(env, u"held")));
    const JniCounter counter(env);
    const auto failing = [&](auto function) {
        {
            const JniFaults faults(env, function, 1);
            EXPECT_THROW(NewJNVArrayProxy(env, array.get()), tether::Exception);
        }
        expectThrownClass(env, "java/lang/OutOfMemoryError");
        EXPECT_EQ(counter.globalReferences(), 0);
        EXPECT_TRUE(ojIsJavaArray(array.get()));
    };
    failing(&JNINativeInterface_::NewObjectA);
    failing(&JNINativeInterface_::NewGlobalRef);
}

}  // namespace

}  // namespace nativevrl::test
