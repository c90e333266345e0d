#include "support/jvmtest.h"
#include "toarray/creatednatives.h"
#include "toarray/datamodel.h"

namespace nativevrl::test {

namespace {

using Bits = std::vector<std::uint64_t>;

class Creation : public JvmTest {
protected:
    jintArray dims(const std::vector<jint>& extents) { return intArray(env, extents); }
};

TEST_F(Creation, OfScalarsCastsBothParts) {
    std::mt19937 random(7);
    for (std::size_t run = 0; run < 12 * 8 * std::size(kElementClasses); ++run) {
        const char type = kPrimitiveTypes[run % 8];
        const qxClassID classId = kElementClasses[run / 8 % std::size(kElementClasses)];
        const Value real = randomValue(random, type);
        const Value imaginary = randomValue(random, type);
        SCOPED_TRACE(testing::Message() << type << " to " << classId << ": " << real << ", " << imaginary);
        const bool isComplex = randomBelow(random, 2) == 1 && type != 'C' && classId > qxCHAR_CLASS;
        const qxArrayOwner array =
            takeArray(env, withType(type, [&](auto zero) {
                          using T = decltype(zero);
                          return fromScalar(env, static_cast<T>(real), static_cast<T>(imaginary), classId, isComplex);
                      }));
        const Bits imaginaryBits = isComplex ? Bits{modelBits(classId, type, imaginary)} : Bits{};
        EXPECT_EQ(contentOf(array.get()), ModelArray(classId, {1, 1}, {modelBits(classId, type, real)}, imaginaryBits));
    }
}

/// Sources shorter and longer than the array, primitive and as objects.
TEST_F(Creation, FromFlatDataCopiesWhatBothHave) {
    std::mt19937 random(11);
    for (const qxClassID classId : kElementClasses) {
        const std::string accepted = classId == qxLOGICAL_CLASS ? "Z" : classId == qxCHAR_CLASS ? "C" : "BSIJFD";
        for (const char type : accepted) {
            for (const std::size_t length : {0, 5, 9}) {
                SCOPED_TRACE(testing::Message() << length << " of " << type << " to " << classId);
                const JavaData row = randomRow(random, type, length);
                JavaData objects{JavaData::nested};
                Bits bits(6);
                Bits bitsOfObjects(6);
                for (std::size_t i = 0; i < length; ++i) {
                    objects.elements.push_back({JavaData::boxed, type, {row.values[i]}});
                    bits[i % 6] = i < 6 ? modelBits(classId, type, row.values[i]) : bits[i % 6];
                    bitsOfObjects[i % 6] = i < 6 ? modelBits(classId, type, row.values[i], true) : bitsOfObjects[i % 6];
                }
                const bool isComplex = classId > qxCHAR_CLASS;
                jobject rowObject = toJava(env, row);
                jobject array = toJava(env, objects);
                const JniCounter counter(env);
                const qxArrayOwner flat = takeArray(
                    env, fromFlat(env, dims({2, 3}), rowObject, isComplex ? array : nullptr, classId, isComplex));
                const qxArrayOwner ofObjects =
                    takeArray(env, fromFlat(env, dims({6}), array, nullptr, classId, qxREAL));
                EXPECT_EQ(counter.pinnedBlocks(), 0);
                EXPECT_EQ(contentOf(flat.get()), ModelArray(classId, {2, 3}, bits, isComplex ? bitsOfObjects : Bits{}));
                EXPECT_EQ(contentOf(ofObjects.get()), ModelArray(classId, {1, 6}, bitsOfObjects, {}));
            }
        }
    }
}

TEST_F(Creation, OfStatedDimensions) {
    const auto create = [&](const std::vector<jint>& extents, jint classId) {
        return takeArray(env, stated(env, dims(extents), classId, qxREAL));
    };
    EXPECT_EQ(contentOf(create({}, 0).get()), ModelArray(qxDOUBLE_CLASS, {0, 0}, {}, {}));
    EXPECT_EQ(contentOf(create({3}, qxINT8_CLASS).get()), ModelArray(qxINT8_CLASS, {1, 3}, {0, 0, 0}, {}));
    EXPECT_EQ(qxGetClassID(create({2, 2}, qxCELL_CLASS).get()), qxCELL_CLASS);
    EXPECT_EQ(create(std::vector<jint>(11, 1), qxSTRUCT_CLASS)->numberOfDimensions(), 11U);
    const auto createStruct = [&](jintArray extents, const std::vector<jobject>& names) {
        return takeArray(
            env, NVKRT(qxCreateStructArray)(env, nullptr, extents, objectArray(env, "java/lang/String", names)));
    };
    const qxArrayOwner named =
        createStruct(dims({1, 2}), {javaString(env, u"a"), javaString(env, u""), nullptr, javaString(env, u"b")});
    ASSERT_EQ(named->get_number_of_struct_fields(), 2U);
    EXPECT_STREQ(named->get_struct_field_name_by_number(1), "b");
    EXPECT_TRUE(qxIsEmpty(createStruct(nullptr, {}).get()));
}

}  // namespace

}  // namespace nativevrl::test
