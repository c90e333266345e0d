#include "arrays/natives.h"

#include <tuple>

namespace nativevrl::test::serialise {

class Serialised : public JvmTest {
protected:
    jbyteArray serialise(jobject handle) { return NVKRT(qxSerialize)(env, nullptr, handle); }
    jobject deserialise(jbyteArray bytes) { return NVKRT(qxDeserialize)(env, nullptr, bytes); }
    jint compare(jobject first, jobject second) { return NVKRT(qxCompareArray)(env, nullptr, first, second); }
    bool identical(jobject first, jobject second) {
        return NVKRT(qxIsIdentical)(env, nullptr, first, second) == JNI_TRUE;
    }
    jint hash(jobject handle) { return NVKRT(qxGetHashValue)(env, nullptr, handle); }

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

/// Null, then unknown, then all others by the length of their form and the first byte that differs, unsigned.
TEST_F(Serialised, ComparisonIsTheOrderOfTheFormsAndEveryKindComesBackEqual) {
    const std::vector<Held> kinds = everyKind();
    std::vector<std::tuple<std::size_t, std::size_t, std::vector<std::uint8_t>>> ranks;
    for (const Held& held : kinds) {
        const auto form = toVector<jbyte>(env, serialise(held.handle));
        ranks.emplace_back(std::min<std::size_t>(ranks.size(), 2), form.size(),
                           std::vector<std::uint8_t>(form.begin(), form.end()));
    }
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const jobject back = deserialise(serialise(kinds[i].handle));
        const qxArrayOwner owner(arrayIn(env, back));
        EXPECT_EQ(hash(kinds[i].handle) == 0, i < 2);
        EXPECT_EQ(hash(kinds[i].handle), hash(back));
        EXPECT_TRUE(i < 2 ? qxGetClassID(owner.get()) == qxUNKNOWN_CLASS : identical(kinds[i].handle, back)) << i;
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
    EXPECT_EQ(deserialise(primitiveArray<jbyte>(env, {1, 2, 3})), nullptr);
}

}  // namespace nativevrl::test::serialise
