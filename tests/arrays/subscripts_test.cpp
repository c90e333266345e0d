#include "arrays/subscripts.h"
#include "arrays/natives.h"

#include <random>

namespace nativevrl::test {

namespace {

constexpr const char* outOfBounds = "java/lang/ArrayIndexOutOfBoundsException";

class Subscripts : public JvmTest {
protected:
    jint position(jobject handle, jintArray subscripts) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcSingleSubscript(env, nullptr, handle, subscripts);
    }
    jint slot(jobject handle, jintArray fieldAndSubscripts) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcStructSingleSubscript__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2_3I(
            env, nullptr, handle, fieldAndSubscripts);
    }
    jint slot(jobject handle, jstring field, jintArray subscripts) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcStructSingleSubscript__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2Ljava_lang_String_2_3I(
            env, nullptr, handle, field, subscripts);
    }
    jint slot(jobject handle, jstring field, jint index) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxCalcStructSingleSubscript__Lcom_norvane_toolbox_loomkit_internal_NativePtr_2Ljava_lang_String_2I(
            env, nullptr, handle, field, index);
    }
    jintArray run(jobject handle, jint dimension) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetIndexArray(env, nullptr, handle, dimension);
    }
};

TEST_F(Subscripts, AgreeWithTheOrderOfStorage) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    const char* fields[] = {"first", "second", "third"};
    for (int round = 0; round < 60; ++round) {
        std::vector<std::uint32_t> extents(2 + random() % 4);
        std::generate(extents.begin(), extents.end(), [&] { return 1 + random() % 4; });
        const auto count = static_cast<std::uint32_t>(extents.size());
        const Held dense(env, qxCreateNumericArray(count, extents.data(), qxINT32_CLASS, qxREAL));
        const std::uint32_t fieldCount = 1 + random() % 3;
        const Held records(env, qxCreateStructArray(count, extents.data(), fieldCount, fields));
        std::vector<jint> subscripts(count, 1);
        std::vector<std::vector<jint>> runs(count);
        for (jint expected = 0; expected < static_cast<jint>(qxGetNumberOfElements(dense.array.get())); ++expected) {
            ASSERT_EQ(env->PushLocalFrame(8), JNI_OK);
            const jintArray javaSubscripts = intArray(env, subscripts);
            ASSERT_EQ(position(dense.handle, javaSubscripts), expected);
            const jint field = static_cast<jint>(random() % fieldCount);
            std::vector<jint> withField = {field + 1};
            withField.insert(withField.end(), subscripts.begin(), subscripts.end());
            const jint expectedSlot = field + static_cast<jint>(fieldCount) * expected;
            const jstring name = env->NewStringUTF(fields[field]);
            ASSERT_EQ(slot(records.handle, intArray(env, withField)), expectedSlot);
            ASSERT_EQ(slot(records.handle, name, javaSubscripts), expectedSlot);
            ASSERT_EQ(slot(records.handle, name, expected + 1), expectedSlot);
            env->PopLocalFrame(nullptr);
            for (std::uint32_t i = 0; i < count; ++i) {
                runs[i].push_back(subscripts[i]);
            }
            for (std::uint32_t i = 0; i < count && ++subscripts[i] > static_cast<jint>(extents[i]); ++i) {
                subscripts[i] = 1;
            }
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_EQ(toVector<jint>(env, run(dense.handle, static_cast<jint>(i))), runs[i]);
        }
        ASSERT_EQ(toVector<jint>(env, run(dense.handle, static_cast<jint>(count))),
                  std::vector<jint>(runs[0].size(), 1));
        expectNoThrow(env);
    }
}

TEST_F(Subscripts, RunsOfSparseArraysCoverWhatIsStored) {
    const Held held(env, qxCreateSparse(5, 4, 0, qxREAL));
    EXPECT_EQ(lengthOf(env, run(held.handle, 0)), 0u);
    for (const jint index : {3, 4, 17, 15, 0}) {
        setAt(env, held.handle, index, jdouble{1}, true);
    }
    EXPECT_EQ(toVector<jint>(env, run(held.handle, 0)), (std::vector<jint>{1, 4, 5, 1, 3}));
    EXPECT_EQ(toVector<jint>(env, run(held.handle, 1)), (std::vector<jint>{1, 1, 1, 4, 4}));
    EXPECT_EQ(toVector<jint>(env, run(held.handle, 2)), (std::vector<jint>{1, 1, 1, 4, 4}));
    for (const jint outside : {-1, 3, std::numeric_limits<jint>::max(), std::numeric_limits<jint>::min()}) {
        EXPECT_EQ(lengthOf(env, run(held.handle, outside)), 0u);
    }
    EXPECT_EQ(lengthOf(env, run(newHandle(env, nullptr), 0)), 0u);
    expectNoThrow(env);
}

TEST_F(Subscripts, RefuseInTheStatedOrder) {
    const Held matrix(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const Held empty(env, qxCreateNumericMatrix(0, 4, qxDOUBLE_CLASS, qxREAL));
    const Held huge(env, qxCreateSparse(65536, 65537, 0, qxREAL));
    const Held wide(env, qxCreateSparse(2147483647, 2, 0, qxREAL));
    const jobject null = newHandle(env, nullptr);
    struct Case {
        jobject handle;
        jintArray subscripts;
        const char* exception;
        const char* message;
        jint result;
    };
    const Case cases[] = {
        {null, nullptr, "java/lang/NullPointerException", "null index array", 0},
        {null, intArray(env, {1}), outOfBounds, "Attempt to index into an empty array", -1},
        {matrix.handle, intArray(env, {0, 1}), outOfBounds, "Dimensions out of range", -1},
        {matrix.handle, intArray(env, {4, 1}), outOfBounds, "Dimensions out of range", -1},
        {matrix.handle, intArray(env, {1, 1, 1}), outOfBounds, "Incompatible number of dimensions", -1},
        {matrix.handle, intArray(env, {}), outOfBounds, "Incompatible number of dimensions", -1},
        {empty.handle, intArray(env, {1, 1}), outOfBounds, "Dimensions out of range", -1},
        {huge.handle, intArray(env, {1, 1}), "java/lang/IndexOutOfBoundsException",
         "multiplication overflow (type 'unsigned int'): 65537 * 65536", -1},
        {wide.handle, intArray(env, {2, 2}), "java/lang/IndexOutOfBoundsException",
         "TAVRIX index too big to convert to Java int", -1},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(position(one.handle, one.subscripts), one.result);
        expectThrown(env, one.exception, one.message);
    }
    EXPECT_EQ(position(wide.handle, intArray(env, {1, 2})), 2147483647);
    expectNoThrow(env);
}

TEST_F(Subscripts, OfStructsRefuseInTheStatedOrder) {
    const char* fields[] = {"a", "b", "c"};
    const Held records(env, qxCreateStructMatrix(2, 2, 3, fields));
    const Held matrix(env, qxCreateNumericMatrix(2, 2, qxDOUBLE_CLASS, qxREAL));
    const jobject null = newHandle(env, nullptr);
    const jstring known = javaString(env, u"b");
    const jstring unknown = javaString(env, u"x");
    const jintArray ones = intArray(env, {1, 1});
    constexpr const char* nullPointer = "java/lang/NullPointerException";
    constexpr const char* illegal = "java/lang/IllegalArgumentException";
    const auto expectRefused = [&](jint result, const char* exception, const char* message) {
        EXPECT_EQ(result, 0);
        expectThrown(env, exception, message);
    };
    expectRefused(slot(null, jintArray{nullptr}), nullPointer, "null index array");
    expectRefused(slot(null, ones), outOfBounds, "Attempt to index into an empty array");
    for (const auto& bad : std::vector<std::vector<jint>>{{}, {0, 1, 1}, {4, 1, 1}, {-1, 9, 9}}) {
        expectRefused(slot(records.handle, intArray(env, bad)), outOfBounds, "Struct array index out of bounds");
    }
    expectRefused(slot(matrix.handle, intArray(env, {1, 1, 1})), outOfBounds, "Struct array index out of bounds");
    expectRefused(slot(records.handle, intArray(env, {1, 1})), outOfBounds, "Incompatible number of dimensions");
    expectRefused(slot(records.handle, intArray(env, {1, 1, 3})), outOfBounds, "Dimensions out of range");
    expectRefused(slot(records.handle, intArray(env, {1, 1, -1})), outOfBounds, "Dimensions out of range");

    expectRefused(slot(null, nullptr, jintArray{nullptr}), nullPointer, "null index array");
    expectRefused(slot(null, nullptr, ones), nullPointer, "null field name");
    expectRefused(slot(null, known, ones), outOfBounds, "Attempt to index into an empty array");
    expectRefused(slot(records.handle, unknown, intArray(env, {9})), illegal, "Illegal or non-existent field name");
    expectRefused(slot(records.handle, known, intArray(env, {1})), outOfBounds, "Incompatible number of dimensions");
    expectRefused(slot(records.handle, known, intArray(env, {3, 1})), outOfBounds, "Dimensions out of range");

    expectRefused(slot(null, nullptr, jint{1}), nullPointer, "null field name");
    expectRefused(slot(null, known, jint{1}), "java/lang/IndexOutOfBoundsException",
                  "Attempt to index into an empty array");
    for (const jint bad : {0, 5, -7, std::numeric_limits<jint>::min()}) {
        expectRefused(slot(records.handle, unknown, bad), outOfBounds, "Index out of bounds");
    }
    expectRefused(slot(records.handle, unknown, jint{4}), illegal, "Illegal or non-existent field name");
    EXPECT_EQ(slot(records.handle, known, jint{2}), 4);
    expectNoThrow(env);
}

TEST_F(Subscripts, NativeChecksKnowAnArrayWithoutDimensions) {
    const std::uint32_t extents[] = {2, 3};
    const unsigned subscripts[] = {2, 4};
    PinnedElements<jint> none(env, nullptr);
    EXPECT_THROW(checkSubscripts(env, extents, 0, none, 0), tether::ArrayIndexOutOfBoundsException);
    expectThrown(env, outOfBounds, "Attempt to index into an empty array");
    EXPECT_THROW(checkSubscripts(env, extents, 2, subscripts, 2), tether::ArrayIndexOutOfBoundsException);
    expectThrown(env, outOfBounds, "Dimensions out of range");
    checkSubscripts(env, extents, 1, subscripts, 1);
    expectNoThrow(env);
}

}  // namespace

}  // namespace nativevrl::test
