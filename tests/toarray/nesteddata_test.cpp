#include "proxies/jnvarrayproxy.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"
#include "toarray/classification.h"
#include "toarray/creatednatives.h"
#include "toarray/datamodel.h"

namespace nativevrl::test {

namespace {

class NestedData : public JvmTest {
protected:
    /// The imaginary part has a say only where the real part asks for no class.
    static qxClassID decided(const JavaData& real, const JavaData& imaginary) {
        const qxClassID classId = modelClass(real);
        return classId == qxUNKNOWN_CLASS && imaginary.kind != JavaData::null ? modelClass(imaginary) : classId;
    }

    /// Expects the pair to become what the model says, with nothing left over.
    void expectAsModel(const JavaData& real, const JavaData& imaginary, qxClassID stated, bool isComplex,
                       bool typed = false) {
        ASSERT_EQ(env->PushLocalFrame(64), JNI_OK);
        jobject realObject = toJava(env, real, typed);
        jobject imaginaryObject = toJava(env, imaginary, typed);
        const qxClassID classId = stated != qxUNKNOWN_CLASS ? stated : decided(real, imaginary);
        const auto convert = [&] {
            const JniCounter counter(env);
            qxArrayOwner array = takeArray(env, fromObjects(env, realObject, imaginaryObject, stated, isComplex));
            EXPECT_EQ(counter.pinnedBlocks(), 0);
            references_ = counter.localReferences();
            return array;
        };
        qxArrayOwner array = convert();
        if (classId == qxUNKNOWN_CLASS) {
            expectThrownClass(env, "java/lang/RuntimeException");
        } else {
            array = convert();  // what the first one looked up is there now
            EXPECT_EQ(contentOf(array.get()), modelOf(real, imaginary, classId, isComplex));
            EXPECT_EQ(references_, 0);
        }
        env->PopLocalFrame(nullptr);
    }

private:
    int references_ = 0;
};

TEST_F(NestedData, BecomesWhatTheModelSaysForEveryClassAndShape) {
    for (unsigned seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const bool texts = seed % 3 == 0;
        const JavaData real = randomData(random, 4, 4, texts);
        const JavaData imaginary = randomData(random, 3, 4, texts);
        qxClassID stated = texts ? qxCHAR_CLASS : kElementClasses[randomBelow(random, std::size(kElementClasses))];
        const bool hasTexts = !texts && (stated == qxCHAR_CLASS || decided(real, imaginary) == qxCHAR_CLASS);
        if (hasTexts) {
            stated = qxDOUBLE_CLASS;  // the texts of floating numbers are not the model's
        } else if (!texts && seed % 2 == 0) {
            stated = qxUNKNOWN_CLASS;
        }
        expectAsModel(real, imaginary, stated, randomBelow(random, 2) == 0);
    }
}

/// Shapes on both sides of what is gathered before it is stored, some past the caches, with ragged and missing rows.
TEST_F(NestedData, OfLongRowsBecomesWhatTheModelSays) {
    constexpr std::size_t shapes[][3] = {{70, 64, 0}, {33, 130, 0}, {200, 63, 0},    {9, 20000, 0},
                                         {7, 9, 65},  {65, 8, 70},  {1024, 2048, 0}, {1001, 2100, 0}};
    std::mt19937 random(20240611);
    for (const auto& shape : shapes) {
        for (std::size_t run = 0; run < (shape[0] * shape[1] < 100000 ? 8 : 1); ++run) {
            SCOPED_TRACE(testing::Message() << shape[0] << " by " << shape[1] << " by " << shape[2] << ", run " << run);
            const bool isDeep = shape[2] != 0;
            const char type = run == 0 ? 'D' : kPrimitiveTypes[run];
            const auto page = [&](std::size_t rows, std::size_t columns) {
                JavaData data{JavaData::nested};
                for (std::size_t i = 0; i < rows; ++i) {
                    const std::size_t length = randomBelow(random, 4) == 0 ? randomBelow(random, columns) : columns;
                    data.elements.push_back(i != 1 && length == 0 ? JavaData{} : randomRow(random, type, length));
                }
                return data;
            };
            JavaData data = page(isDeep ? 0 : shape[0], shape[1]);
            for (std::size_t i = 0; isDeep && i < shape[0]; ++i) {
                data.elements.push_back(i == 2    ? randomRow(random, 'J', 5)
                                        : i == 40 ? JavaData{JavaData::boxed, 'I', {7}}
                                                  : page(shape[1], shape[2]));
            }
            const qxClassID classId = run == 0 ? qxDOUBLE_CLASS : kElementClasses[(run * 5 + 2) % 12];
            expectAsModel(data, {}, classId == qxCHAR_CLASS ? qxINT16_CLASS : classId, false, !isDeep);
        }
    }
}

TEST_F(NestedData, HasTheClassOfItsFirstElementOrOfItsArray) {
    const std::pair<const char*, qxClassID> emptyArraysOf[] = {
        {"java/lang/Object", qxUNKNOWN_CLASS},    {"java/lang/String", qxCHAR_CLASS},    {"[Z", qxLOGICAL_CLASS},
        {"java/lang/Character", qxCHAR_CLASS},    {"java/lang/Double", qxDOUBLE_CLASS},  {"[[B", qxINT8_CLASS},
        {"[Ljava/lang/Double;", qxDOUBLE_CLASS},  {"[Ljava/lang/String;", qxCHAR_CLASS}, {"[[[S", qxINT16_CLASS},
        {"java/math/BigInteger", qxUNKNOWN_CLASS}};
    jobject cell = javaCell(env, {0, 0}, {});
    jobject number = boxed<jdouble>(env, 1);
    JConvert::JavaKindReader kindOf(env);
    const auto classOf = [&](const char* elementClass, const std::vector<jobject>& elements) {
        return JConvert::classifyJavaObject(kindOf, objectArray(env, elementClass, elements), true);
    };
    for (const auto& [elementClass, classId] : emptyArraysOf) {
        EXPECT_EQ(classOf(elementClass, {}), classId) << elementClass;
    }
    EXPECT_EQ(classOf("java/lang/Object", {nullptr, number}), qxCHAR_CLASS);
    EXPECT_EQ(classOf("java/lang/Object", {number, javaString(env, u"abc")}), qxDOUBLE_CLASS);
    EXPECT_EQ(classOf("java/lang/Object", {cell}), qxUNKNOWN_CLASS);
    EXPECT_EQ(JConvert::classifyJavaObject(kindOf, cell, true), qxCELL_CLASS);
    EXPECT_EQ(JConvert::classifyJavaObject(kindOf, cell, false), qxUNKNOWN_CLASS);
}

TEST_F(NestedData, ThatShrinksAfterItWasMeasuredLeavesZeros) {
    const auto textOf = [&](const char* element, jobject object) {
        const qxArrayOwner array =
            takeArray(env, fromObjects(env, objectArray(env, element, {object}), nullptr, qxCHAR_CLASS, 0));
        return std::u16string(static_cast<const char16_t*>(array->realData()), qxGetNumberOfElements(array.get()));
    };
    const std::u16string full(1000, u'x');
    EXPECT_EQ(textOf("java/lang/String", javaString(env, full)), full);  // leaves its memory to the next one
    const jobject shrinking = newObject(env, "com/norvane/toolbox/loomkit/testing/ShrinkingText", "()V");
    EXPECT_EQ(textOf("java/lang/Object", shrinking), u"a" + std::u16string(999, u'\0'));
}

TEST_F(NestedData, OfTextIsReadByTheParsersOfTheElementType) {
    const struct {
        std::u16string text;
        qxClassID classId;
        std::uint64_t bits;
    } cases[] = {{u"12", qxINT32_CLASS, 12},
                 {u"1.9", qxINT8_CLASS, 1},
                 {u"300", qxUINT8_CLASS, 44},
                 {u"true", qxLOGICAL_CLASS, 1},
                 {u"1", qxLOGICAL_CLASS, 0},
                 {u"-1", qxUINT16_CLASS, 0xffff},
                 {u"1e20", qxINT64_CLASS, 1ULL << 63U},
                 {u"0.5", qxSINGLE_CLASS, 0x3f000000}};
    for (const auto& one : cases) {
        jobject data = objectArray(env, "java/lang/Object", {javaString(env, one.text)});
        const qxArrayOwner array = takeArray(env, fromObjects(env, data, nullptr, one.classId, false));
        ASSERT_NE(array, nullptr);
        EXPECT_EQ(contentOf(array.get()), (ModelArray{one.classId, {1, 1}, {one.bits}, {}}));
    }
    // Each text of a row of numbers is written over the one before it, from the first row down.
    const qxArrayOwner rows = takeArray(env, fromObjects(env, intArray(env, {1, 22}), nullptr, qxCHAR_CLASS, false));
    EXPECT_EQ(contentOf(rows.get()), (ModelArray{qxCHAR_CLASS, {2, 2}, {'2', '2', 0, 0}, {}}));
}

TEST_F(NestedData, OfCellsAndStructsIsConvertedValueByValue) {
    jobject inner = javaCell(env, {1, 2}, {javaString(env, u"ab"), nullptr});
    jobject outer = javaStruct(env, {2, 1}, {u"a", u"b"}, {inner, boxed<jint>(env, 7), nullptr, intArray(env, {1, 2})});
    const JniCounter counter(env);
    const qxArrayOwner array = takeArray(env, fromObjects(env, outer, nullptr, qxUNKNOWN_CLASS, false));
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(counter.localReferences() + counter.pinnedBlocks(), 0);
    EXPECT_EQ(qxGetClassID(array.get()), qxSTRUCT_CLASS);
    EXPECT_EQ(qxGetM(array.get()), 2U);
    EXPECT_STREQ(array->get_struct_field_name_by_number(1), "b");
    const qxArray* cell = qxGetField(array.get(), 0, "a");
    ASSERT_EQ(qxGetClassID(cell), qxCELL_CLASS);
    EXPECT_EQ(qxGetString(qxGetCell(cell, 0)), "ab");
    const ModelArray nothing{qxDOUBLE_CLASS, {0, 0}, {}, {}};
    EXPECT_EQ(contentOf(qxGetCell(cell, 1)), nothing);
    EXPECT_EQ(contentOf(qxGetField(array.get(), 0, "b")), (ModelArray{qxINT32_CLASS, {1, 1}, {7}, {}}));
    EXPECT_EQ(contentOf(qxGetField(array.get(), 1, "a")), nothing);
    EXPECT_EQ(contentOf(qxGetField(array.get(), 1, "b")), (ModelArray{qxINT32_CLASS, {1, 2}, {1, 2}, {}}));
    // Without its field names a struct has no slots.
    const qxArrayOwner zero = takeArray(env, fromObjects(env, inner, nullptr, qxINT8_CLASS, false));
    EXPECT_EQ(contentOf(zero.get()), ModelArray(qxINT8_CLASS, {1, 2}, {0, 0}, {}));
    const qxArrayOwner bare = takeArray(env, fromObjects(env, outer, nullptr, qxSTRUCT_CLASS, false));
    EXPECT_EQ(bare->get_number_of_struct_fields(), 0U);
}

TEST_F(NestedData, InAWrapperIsSharedOrConverted) {
    qxArray* source = qxCreateDoubleScalar(2.5);
    const NewJNVBuiltinArrayProxy wrapper(env, source, true);
    const auto pass = [&](qxClassID classId) {
        return takeArray(env, fromObjects(env, wrapper.ref(), nullptr, classId, false));
    };
    EXPECT_TRUE(qxSharesStorage(pass(qxUNKNOWN_CLASS).get(), source));
    EXPECT_TRUE(qxSharesStorage(pass(qxDOUBLE_CLASS).get(), source));
    EXPECT_EQ(contentOf(pass(qxINT8_CLASS).get()), (ModelArray{qxINT8_CLASS, {1, 1}, {3}, {}}));
    callVoid(env, wrapper.ref(), "close", "()V");
}

}  // namespace

}  // namespace nativevrl::test
