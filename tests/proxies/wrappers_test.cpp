#include "jzi/javaarray.h"
#include "jzi/jzi.h"
#include "proxies/jnvarrayproxy.h"
#include "proxies/jnvjavaobjectrefproxy.h"
#include "qx/arrayowner.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"

#include <functional>

namespace nativevrl::test::wrappers {

std::vector<std::pair<std::string, qxArray*>> wrapperCases() {
    std::vector<std::pair<std::string, qxArray*>> cases = {
        {"NVCellArray", qxCreateCellMatrix(1, 2)},
        {"NVStructArray", qxCreateStructMatrix(1, 1, 0, nullptr)},
        {"NVLogicalArray", qxCreateNumericMatrix(1, 1, qxLOGICAL_CLASS, qxREAL)},
        {"NVLogicalArray", qxCreateSparseLogicalMatrix(3, 3, 1)},
        {"NVCharArray", qxCreateString("text")},
        {"NVNumericArray", qxCreateSparse(3, 3, 1, qxCOMPLEX)},
        {"NVFunctionHandle", qxCreateFunctionHandle("solve")},
        {"NVBuiltinArray", qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL)},
        {"NVBuiltinArray", nullptr},
    };
    for (int id = qxDOUBLE_CLASS; id <= qxUINT64_CLASS; ++id) {
        cases.emplace_back("NVNumericArray", qxCreateNumericMatrix(2, 3, static_cast<qxClassID>(id), qxREAL));
    }
    return cases;
}

using Wrappers = JvmTest;

TEST_F(Wrappers, AreChosenByTheClassOfTheArray) {
    for (const auto& [name, array] : wrapperCases()) {
        const NewJNVArrayProxy wrapper(env, array);
        EXPECT_EQ(classNameOf(env, wrapper.ref()), "com/norvane/toolbox/loomkit/" + name);
        EXPECT_EQ(arrayOf(env, wrapper.ref()), array);
        EXPECT_EQ(JNVBuiltinArrayProxy(env, wrapper.ref()).getArray(), array);
        close(env, wrapper.ref());
    }
}

TEST_F(Wrappers, WhatHasNoSpecificClassIsRefusedAndStaysTheCallers) {
    int payload = 0;
    const qxArrayOwner function(qxCreateFunctionHandle("solve"));
    const qxArrayOwner opaque(qxCreateOpaque("matcher", &payload, [](void*) {}));
    const std::string words = "Could not create NVArray from unsupported TAVRIX type ";
    EXPECT_THROW(NewJNVBuiltinArrayProxy(env, function.get(), true), tether::Exception);
    expectThrown(env, "java/lang/RuntimeException", (words + "<function-handle>").c_str());
    EXPECT_THROW(NewJNVBuiltinArrayProxy(env, opaque.get(), true), tether::Exception);
    expectThrown(env, "java/lang/RuntimeException", (words + "matcher").c_str());
    EXPECT_THROW(NewJNVArrayProxy(env, opaque.get()), tether::Exception);
    expectThrown(env, "java/lang/RuntimeException", (words + "matcher").c_str());
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

}  // namespace nativevrl::test::wrappers
