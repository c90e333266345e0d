#include "arrays/natives.h"

#include <cstring>

namespace nativevrl::test {

namespace {

class Handles : public JvmTest {
protected:
    jobject createEmpty(jint classId) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateEmptyArray(env, nullptr, classId);
    }
    jobject share(jobject handle) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCreateSharedCopy(env, nullptr, handle);
    }
    jobject duplicate(jobject handle) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDuplicateArray(env, nullptr, handle);
    }
    void destroy(jobject handle) {
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDestroyArray__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2(
            env, nullptr, handle);
    }
    void destroy(jbyteArray block) {
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDestroyArray___3B(env, nullptr, block);
    }

    /// Addresses one after the other, and then some bytes.
    jbyteArray pack(const std::vector<qxArray*>& arrays, std::size_t rest) {
        std::vector<jbyte> bytes(arrays.size() * sizeof(qxArray*) + rest, 1);
        const auto* words = reinterpret_cast<const jbyte*>(arrays.data());
        std::copy_n(words, arrays.size() * sizeof(qxArray*), bytes.begin());
        return primitiveArray<jbyte>(env, bytes);
    }
};

TEST_F(Handles, CreateEmptyArraysOfAnyClass) {
    for (jint id = 0; id <= 15; ++id) {
        const jobject handle = createEmpty(id);
        if (id == 5) {
            EXPECT_EQ(addressIn(env, handle), nullptr) << "what can't be made is a handle of 0";
            continue;
        }
        const qxArray* array = arrayIn(env, handle);
        EXPECT_EQ(qxGetClassID(array), id);
        EXPECT_EQ(array->numberOfDimensions(), 2u);
        EXPECT_EQ(qxGetM(array) + qxGetN(array), 0u);
        EXPECT_FALSE(qxIsComplex(array));
        destroy(handle);
    }
    EXPECT_EQ(addressIn(env, createEmpty(-3)), nullptr);
    expectNoThrow(env);
}

TEST_F(Handles, CopyAndEndArrays) {
    const Held held(env, qxCreateString("text"));
    const jobject shared = share(held.handle);
    const jobject deep = duplicate(held.handle);
    EXPECT_TRUE(qxSharesStorage(arrayIn(env, shared), held.array.get()));
    EXPECT_FALSE(qxSharesStorage(arrayIn(env, deep), held.array.get()));
    EXPECT_EQ(qxGetString(arrayIn(env, deep)), "text");
    const void* address = addressIn(env, shared);
    destroy(shared);
    EXPECT_EQ(addressIn(env, shared), address) << "clearing it is Java's own duty";
    destroy(deep);
    const jobject null = newHandle(env, nullptr);
    destroy(null);
    EXPECT_EQ(addressIn(env, share(null)), nullptr);
    EXPECT_EQ(duplicate(nullptr), nullptr);
    expectNoThrow(env);
}

TEST_F(Handles, WhatJavaCannotTakeEnds) {
    const Held held(env, qxCreateString("text"));
    const std::size_t live = qxLiveArrayCount();
    for (const int native : {0, 1, 2}) {
        const JniFaults fault(env, &JNINativeInterface_::NewObjectA, 1);
        EXPECT_EQ(native == 0   ? createEmpty(qxDOUBLE_CLASS)
                  : native == 1 ? share(held.handle)
                                : duplicate(held.handle),
                  nullptr);
        EXPECT_TRUE(fault.struck());
        EXPECT_EQ(qxLiveArrayCount(), live);
        expectThrownClass(env, "java/lang/OutOfMemoryError");
    }
}

TEST_F(Handles, ABlockEndsManyArraysAtOnce) {
    const std::size_t live = qxLiveArrayCount();
    const jbyteArray block = pack({qxCreateDoubleScalar(1), nullptr, qxCreateCellMatrix(1, 1)}, 7);
    destroy(block);
    EXPECT_EQ(qxLiveArrayCount(), live);
    const auto after = toVector<jbyte>(env, block);
    EXPECT_EQ(std::count(after.begin(), after.end() - 7, 0), std::ptrdiff_t(3 * sizeof(qxArray*)));
    EXPECT_EQ(std::count(after.end() - 7, after.end(), 1), 7);
    destroy(block);
    destroy(pack({}, 0));
    destroy(jbyteArray{nullptr});
    expectNoThrow(env);

    qxArray* kept = qxCreateDoubleScalar(2);
    {
        const JniFaults fault(env, &JNINativeInterface_::GetByteArrayElements, 1);
        destroy(pack({kept}, 0));
    }
    expectThrownClass(env, "java/lang/OutOfMemoryError");
    EXPECT_EQ(qxLiveArrayCount(), live + 1) << "without its elements a block ends nothing";
    qxDestroyArray(kept);
}

}  // namespace

}  // namespace nativevrl::test
