#include "arrays/natives.h"
#include "qx/nanbits.h"

#include <random>
#include <tuple>

namespace nativevrl::test {

namespace {

class Serialised : public JvmTest {
protected:
    jbyteArray serialise(jobject handle) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxSerialize(env, nullptr, handle);
    }
    jobject deserialise(jbyteArray bytes) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxDeserialize(env, nullptr, bytes);
    }
    jint compare(jobject first, jobject second) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCompareArray(env, nullptr, first, second);
    }
    bool identical(jobject first, jobject second) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxIsIdentical(env, nullptr, first, second) == JNI_TRUE;
    }
    jint hash(jobject handle) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetHashValue(env, nullptr, handle);
    }

    /// One array of every kind, null and unknown class in front.
    std::vector<Held> everyKind() {
        std::vector<Held> kinds;
        kinds.emplace_back(env, nullptr);
        kinds.emplace_back(env, qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL));
        forEachClass([&](auto one) {
            using Case = decltype(one);
            kinds.emplace_back(env, Case::row(Case::values()));
            kinds.emplace_back(env, Case::row(Case::values(), qxCOMPLEX));
        });
        const char* fields[] = {"name", "value"};
        qxArray* record = qxCreateStructMatrix(1, 2, 2, fields);
        qxSetCell(record, 0, qxCreateString("x"));
        qxSetCell(record, 3, qxCreateFunctionHandle("solve"));
        kinds.emplace_back(env, record);
        qxArray* cell = qxCreateCellMatrix(2, 2);
        qxSetCell(cell, 1, qxDuplicateArray(record));
        qxSetCell(cell, 2, qxCreateSparseLogicalMatrix(2, 3, 4));
        kinds.emplace_back(env, cell);
        kinds.emplace_back(env, qxCreateCellMatrix(0, 3));
        kinds.emplace_back(env, qxCreateFunctionHandle("f"));
        kinds.emplace_back(env, qxCreateSparse(5, 6, 3, qxCOMPLEX));
        setAt(env, kinds.back().handle, jint{7}, jdouble{3}, true);
        setAt(env, kinds.back().handle, jint{20}, jdouble{-1}, false);
        kinds.emplace_back(env, qxCreateDoubleScalar(1));
        kinds.emplace_back(env, qxCreateDoubleScalar(2));
        return kinds;
    }
};

TEST_F(Serialised, EveryKindComesBackEqual) {
    for (const Held& held : everyKind()) {
        const jbyteArray bytes = serialise(held.handle);
        const jobject back = deserialise(bytes);
        const bool hasForm = held.array != nullptr && qxGetClassID(held.array.get()) != qxUNKNOWN_CLASS;
        SCOPED_TRACE(testing::Message() << "class " << (hasForm ? qxGetClassID(held.array.get()) : 0));
        EXPECT_EQ(lengthOf(env, bytes) != 0, hasForm);
        ASSERT_NE(back, nullptr);
        qxArrayOwner array(arrayIn(env, back));
        if (hasForm) {
            EXPECT_EQ(compare(held.handle, back), 0);
            EXPECT_TRUE(identical(held.handle, back));
            EXPECT_EQ(hash(held.handle), hash(back));
            EXPECT_EQ(qxToText(array.get()), qxToText(held.array.get()));
        } else {
            EXPECT_EQ(qxGetClassID(array.get()), qxUNKNOWN_CLASS);
            EXPECT_EQ(hash(held.handle), 0);
        }
        expectNoThrow(env);
    }
}

/// Null, then unknown, then all others by the length of their form and the first byte that differs, unsigned.
TEST_F(Serialised, ComparisonIsTheOrderOfTheForms) {
    const std::vector<Held> kinds = everyKind();
    std::vector<std::tuple<std::size_t, std::size_t, std::vector<std::uint8_t>>> ranks;
    for (const Held& held : kinds) {
        const auto form = toVector<jbyte>(env, serialise(held.handle));
        ranks.emplace_back(std::min<std::size_t>(ranks.size(), 2), form.size(),
                           std::vector<std::uint8_t>(form.begin(), form.end()));
    }
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        for (std::size_t j = 0; j < kinds.size(); ++j) {
            const jint expected = ranks[i] == ranks[j] ? 0 : ranks[i] < ranks[j] ? -1 : 1;
            EXPECT_EQ(compare(kinds[i].handle, kinds[j].handle), expected) << i << " " << j;
            EXPECT_EQ(identical(kinds[i].handle, kinds[j].handle), expected == 0) << i << " " << j;
        }
    }
}

TEST_F(Serialised, NullObjectsAndArraysWithoutAForm) {
    const Held one(env, qxCreateDoubleScalar(1));
    int payload = 0;
    const Held opaque(env, qxCreateOpaque("kind", &payload, [](void*) {}));
    EXPECT_TRUE(identical(nullptr, nullptr));
    EXPECT_FALSE(identical(one.handle, nullptr));
    EXPECT_FALSE(identical(nullptr, one.handle));
    EXPECT_TRUE(identical(newHandle(env, nullptr), newHandle(env, nullptr)));
    EXPECT_EQ(lengthOf(env, serialise(opaque.handle)), 0u);
    EXPECT_EQ(hash(opaque.handle), 0);
    EXPECT_EQ(compare(opaque.handle, one.handle), -1);
    EXPECT_EQ(compare(one.handle, opaque.handle), 1);
    EXPECT_EQ(compare(opaque.handle, opaque.handle), -1);
    EXPECT_EQ(deserialise(nullptr), nullptr);
    expectNoThrow(env);
}

TEST_F(Serialised, DamagedBytesGiveNullAndNoException) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (const Held& held : everyKind()) {
        const auto bytes = toVector<jbyte>(env, serialise(held.handle));
        for (int round = 0; round < 60 && !bytes.empty(); ++round) {
            ASSERT_EQ(env->PushLocalFrame(8), JNI_OK);
            std::vector<jbyte> damaged = bytes;
            const std::size_t at = random() % bytes.size();
            const bool truncate = round % 2 == 0 && at != 0;
            if (truncate) {
                damaged.resize(at);
            } else {
                damaged[at] = static_cast<jbyte>(damaged[at] ^ (1 << random() % 8));
            }
            const jobject handle = deserialise(primitiveArray<jbyte>(env, damaged));
            expectNoThrow(env);
            // A flipped bit in a value is another valid form, and must be read as just that.
            if (handle != nullptr) {
                EXPECT_FALSE(truncate) << at;
                const qxArrayOwner array(arrayIn(env, handle));
                const auto written = toVector<jbyte>(env, serialise(handle));
                const auto* given = reinterpret_cast<const unsigned char*>(damaged.data());
                const auto* exact = reinterpret_cast<const unsigned char*>(written.data());
                EXPECT_TRUE(written.size() == damaged.size() && differInNaNsOnly(given, exact, damaged.size()))
                    << "byte " << at;
            }
            env->PopLocalFrame(nullptr);
        }
    }
}

TEST_F(Serialised, AFailureOnTheWayLeavesNothingPinned) {
    const Held held(env, qxCreateDoubleScalar(1));
    const jbyteArray bytes = serialise(held.handle);
    const JniCounter counter(env);
    {
        const JniFaults fault(env, &JNINativeInterface_::NewObjectA, 1);
        EXPECT_EQ(deserialise(bytes), nullptr);
        EXPECT_TRUE(fault.struck());
    }
    expectThrownClass(env, "java/lang/OutOfMemoryError");
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

}  // namespace

}  // namespace nativevrl::test
