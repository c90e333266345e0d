#include "arrays/subscripts.h"
#include "arrays/natives.h"

#include <random>

namespace nativevrl::test::subscripts {

class Subscripts : public JvmTest {
protected:
    jint position(jobject handle, jintArray subscripts) {
        return NVKRT(qxCalcSingleSubscript)(env, nullptr, handle, subscripts);
    }
    jint slot(jobject handle, jintArray fieldAndSubscripts) {
        return NVKRT_OF_HANDLE(qxCalcStructSingleSubscript, _3I)(env, nullptr, handle, fieldAndSubscripts);
    }
    jint slot(jobject handle, jstring field, jintArray subscripts) {
        return NVKRT_OF_HANDLE(qxCalcStructSingleSubscript, Ljava_lang_String_2_3I)(env, nullptr, handle, field,
                                                                                    subscripts);
    }
    jint slot(jobject handle, jstring field, jint index) {
        return NVKRT_OF_HANDLE(qxCalcStructSingleSubscript, Ljava_lang_String_2I)(env, nullptr, handle, field, index);
    }
    jintArray run(jobject handle, jint dimension) { return NVKRT(qxGetIndexArray)(env, nullptr, handle, dimension); }
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
}

constexpr const char* indexOutOfBounds = "java/lang/IndexOutOfBoundsException";
constexpr const char* nullPointer = "java/lang/NullPointerException";
constexpr const char* noElements = "Attempt to index into an empty array";
constexpr const char* otherCount = "Incompatible number of dimensions";
constexpr const char* outOfRange = "Dimensions out of range";

TEST_F(Subscripts, RefuseInTheStatedOrder) {
    const Held matrix(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const Held empty(env, qxCreateNumericMatrix(0, 4, qxDOUBLE_CLASS, qxREAL));
    const Held huge(env, qxCreateSparse(65536, 65537, 0, qxREAL));
    const Held wide(env, qxCreateSparse(2147483647, 2, 0, qxREAL));
    const jobject null = newHandle(env, nullptr);
    expectRefused(env, position(null, nullptr), nullPointer, "null index array");
    const std::tuple<jobject, std::vector<jint>, const char*, const char*> cases[] = {
        {null, {1}, outOfBounds, noElements},
        {matrix.handle, {0, 1}, outOfBounds, outOfRange},
        {matrix.handle, {4, 1}, outOfBounds, outOfRange},
        {matrix.handle, {1, 1, 1}, outOfBounds, otherCount},
        {matrix.handle, {}, outOfBounds, otherCount},
        {empty.handle, {1, 1}, outOfBounds, outOfRange},
        {huge.handle, {1, 1}, indexOutOfBounds, "multiplication overflow (type 'unsigned int'): 65537 * 65536"},
        {wide.handle, {2, 2}, indexOutOfBounds, "TAVRIX index too big to convert to Java int"},
    };
    for (const auto& [handle, subscripts, exception, message] : cases) {
        EXPECT_EQ(position(handle, intArray(env, subscripts)), -1);
        expectThrown(env, exception, message);
    }
    EXPECT_EQ(position(wide.handle, intArray(env, {1, 2})), 2147483647);
}

TEST_F(Subscripts, OfStructsRefuseInTheStatedOrder) {
    const char* fields[] = {"a", "b", "c"};
    const Held records(env, qxCreateStructMatrix(2, 2, 3, fields));
    const Held matrix(env, qxCreateNumericMatrix(2, 2, qxDOUBLE_CLASS, qxREAL));
    const jobject null = newHandle(env, nullptr);
    const jstring known = javaString(env, u"b");
    const jstring unknown = javaString(env, u"x");
    const jintArray ones = intArray(env, {1, 1});
    constexpr const char* illegal = "java/lang/IllegalArgumentException";
    constexpr const char* noSuchField = "Illegal or non-existent field name";
    const auto refused = [&](const char* exception, const char* message, jobject handle, auto... address) {
        expectRefused(env, slot(handle, address...), exception, message);
    };
    refused(nullPointer, "null index array", null, jintArray{nullptr});
    refused(outOfBounds, noElements, null, ones);
    for (const auto& bad : std::vector<std::vector<jint>>{{}, {0, 1, 1}, {4, 1, 1}, {-1, 9, 9}}) {
        refused(outOfBounds, "Struct array index out of bounds", records.handle, intArray(env, bad));
    }
    refused(outOfBounds, "Struct array index out of bounds", matrix.handle, intArray(env, {1, 1, 1}));
    refused(outOfBounds, otherCount, records.handle, ones);
    refused(outOfBounds, outOfRange, records.handle, intArray(env, {1, 1, 3}));
    refused(outOfBounds, outOfRange, records.handle, intArray(env, {1, 1, -1}));

    refused(nullPointer, "null index array", null, jstring{nullptr}, jintArray{nullptr});
    refused(nullPointer, "null field name", null, jstring{nullptr}, ones);
    refused(outOfBounds, noElements, null, known, ones);
    refused(illegal, noSuchField, records.handle, unknown, intArray(env, {9}));
    refused(outOfBounds, otherCount, records.handle, known, intArray(env, {1}));
    refused(outOfBounds, outOfRange, records.handle, known, intArray(env, {3, 1}));

    refused(nullPointer, "null field name", null, jstring{nullptr}, jint{1});
    refused(indexOutOfBounds, noElements, null, known, jint{1});
    for (const jint bad : {0, 5, -7, std::numeric_limits<jint>::min()}) {
        refused(outOfBounds, "Index out of bounds", records.handle, unknown, bad);
    }
    refused(illegal, noSuchField, records.handle, unknown, jint{4});
    EXPECT_EQ(slot(records.handle, known, jint{2}), 4);
}

TEST_F(Subscripts, NativeChecksKnowAnArrayWithoutDimensions) {
    const std::uint32_t extents[] = {2, 3};
    const unsigned subscripts[] = {2, 4};
    PinnedElements<jint> none(env, nullptr);
    EXPECT_THROW(checkSubscripts(env, extents, 0, none, 0), tether::ArrayIndexOutOfBoundsException);
    expectThrown(env, outOfBounds, noElements);
    EXPECT_THROW(checkSubscripts(env, extents, 2, subscripts, 2), tether::ArrayIndexOutOfBoundsException);
    expectThrown(env, outOfBounds, outOfRange);
    checkSubscripts(env, extents, 1, subscripts, 1);
}

}  // namespace nativevrl::test::subscripts
