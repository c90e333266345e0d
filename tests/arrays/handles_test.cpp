#include "arrays/natives.h"

#include <cstring>

namespace nativevrl::test::handles {

class Handles : public JvmTest {
protected:
    jobject createEmpty(jint classId) { return NVKRT(qxCreateEmptyArray)(env, nullptr, classId); }
    jobject share(jobject handle) { return NVKRT(qxCreateSharedCopy)(env, nullptr, handle); }
    jobject duplicate(jobject handle) { return NVKRT(qxDuplicateArray)(env, nullptr, handle); }
    void destroy(jobject handle) { NVKRT_OF_HANDLE(qxDestroyArray, )(env, nullptr, handle); }
    void destroy(jbyteArray block) { NVKRT(qxDestroyArray___3B)(env, nullptr, block); }

    /// Addresses one after the other, and then some bytes.
    jbyteArray pack(const std::vector<qxArray*>& arrays, std::size_t rest) {
        std::vector<jbyte> bytes(arrays.size() * sizeof(qxArray*) + rest, 1);
        const auto* words = reinterpret_cast<const jbyte*>(arrays.data());
        std::copy_n(words, arrays.size() * sizeof(qxArray*), bytes.begin());
        return primitiveArray<jbyte>(env, bytes);
    }
};

TEST_F(Handles, CreateEmptyArraysOfAnyClass) {
    for (jint id = -1; id <= 15; ++id) {
        const qxArrayOwner array(arrayIn(env, createEmpty(id)));
        if (id == -1 || id == 5) {
            EXPECT_FALSE(array) << "what can't be made is a handle of 0";
            continue;
        }
        EXPECT_EQ(qxGetClassID(array.get()), id);
        EXPECT_EQ(array->numberOfDimensions(), 2u);
        EXPECT_EQ(qxGetM(array.get()) + qxGetN(array.get()), 0u);
        EXPECT_FALSE(qxIsComplex(array.get()));
    }
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
    expectOutOfMemory(env, &JNINativeInterface_::GetByteArrayElements, [&] { destroy(pack({kept}, 0)); });
    EXPECT_EQ(qxLiveArrayCount(), live + 1) << "without its elements a block ends nothing";
    qxDestroyArray(kept);
}

}  // namespace nativevrl::test::handles
