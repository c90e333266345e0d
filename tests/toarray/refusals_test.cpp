#include "layout/leveltable.h"
#include "proxies/jnvarrayproxy.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"
#include "toarray/creatednatives.h"
#include "toarray/jconvert.h"

namespace nativevrl::test {

namespace {

constexpr const char* runtime = "java/lang/RuntimeException";
constexpr const char* illegal = "java/lang/IllegalArgumentException";
constexpr const char* bounds = "java/lang/ArrayIndexOutOfBoundsException";
constexpr const char* store = "java/lang/ArrayStoreException";
constexpr const char* nullPointer = "java/lang/NullPointerException";
constexpr const char* stack = "java/lang/StackOverflowError";
constexpr const char* memory = "java/lang/OutOfMemoryError";

class Refusals : public JvmTest {
protected:
    void SetUp() override {
        JvmTest::SetUp();
        other = newObject(env, "java/lang/Object", "()V");
        one = row({1});
    }

    /// Expects null with the exception pending, and neither a pinned block nor an array left behind.
    void refused(jobject handle, const char* className, const std::string& message, int line = __builtin_LINE()) {
        EXPECT_EQ(handle, nullptr) << "line " << line;
        const char* text = message.empty() ? nullptr : message.c_str();
        expectThrown(env, className, text, __FILE__, line);
        EXPECT_EQ(qxLiveArrayCount(), arrays) << "line " << line;
    }

    jobject row(const std::vector<jdouble>& values) { return primitiveArray<jdouble>(env, values); }
    jobject objects(const std::vector<jobject>& elements) { return objectArray(env, "java/lang/Object", elements); }
    jintArray ints(const std::vector<jint>& values) { return intArray(env, values); }
    jobject triplets(const std::vector<jint>& rows, const std::vector<jint>& columns, jobject values, jint m = -1,
                     jint n = -1, jint room = -1, jint classId = 6) {
        return fromTriplets(env, ints(rows), ints(columns), values, nullptr, m, n, room, classId, qxREAL);
    }

    jobject other = nullptr;
    jobject one = nullptr;
    std::size_t arrays = qxLiveArrayCount();
};

TEST_F(Refusals, OfNestedData) {
    const std::string noClass = "Tried to create qxArray of unsupported type.  Java type: java.lang.Object";
    jobject text = objects({boxed<jint>(env, 1), javaString(env, u"x")});
    qxArray* source = qxCreateDoubleMatrix(2, 2, qxREAL);
    ++arrays;
    const NewJNVBuiltinArrayProxy wrapper(env, source, true);
    const JniCounter counter(env);
    refused(fromObjects(env, other, nullptr, 0, 0), runtime, noClass);
    refused(fromObjects(env, objects({}), other, 0, 1), runtime, noClass);
    refused(fromObjects(env, javaCell(env, {2, 1}, {one, other}), nullptr, 0, 0), runtime, noClass);
    refused(fromObjects(env, javaCell(env, {1, 2}, {one, wrapper.ref()}), nullptr, 0, 0), runtime,
            "NVArray subtypes not allowed as values of non KRT based data types");
    refused(fromObjects(env, text, nullptr, 0, 0), "java/lang/NumberFormatException", "For input string: \"x\"");
    refused(fromObjects(env, one, nullptr, 18, 0), memory, "Unable to create qxArray");
    refused(fromObjects(env, other, nullptr, 1, 0), "java/lang/ClassCastException",
            "java.lang.Object cannot be cast to com.norvane.extern.java.NVCellArray");
    refused(fromObjects(env, nullptr, nullptr, 2, 0), nullPointer, "");
    const JObjectProxy nothing(env, nullptr);
    const auto withExtents = [&](const std::vector<jint>& extents) {
        return JConvert::convertObjectPairWithDimensions(env, wrapper, nothing, ints(extents), qxUNKNOWN_CLASS, qxREAL);
    };
    EXPECT_THROW(withExtents({1, 4}), tether::Exception);
    refused(nullptr, runtime, "array dimensions do not match");
    EXPECT_TRUE(qxSharesStorage(withExtents({2, 2}).get(), source));
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    callVoid(env, wrapper.ref(), "close", "()V");
}

TEST_F(Refusals, OfFlatData) {
    const char* unfit = "Can not convert data from Java type";
    jintArray two = ints({1, 2});
    const JniCounter counter(env);
    refused(fromFlat(env, nullptr, one, nullptr, 6, 0), nullPointer, "");
    refused(fromFlat(env, two, nullptr, nullptr, 6, 0), nullPointer, "");
    refused(fromFlat(env, two, objects({boxed<jint>(env, 1), nullptr}), nullptr, 6, 0), nullPointer, "");
    refused(fromFlat(env, two, primitiveArray<jboolean>(env, {1}), nullptr, 6, 0), illegal, unfit);
    refused(fromFlat(env, two, primitiveArray<jchar>(env, {1}), nullptr, 12, 0), illegal, unfit);
    refused(fromFlat(env, two, boxed<jint>(env, 1), nullptr, 6, 0), illegal, unfit);
    refused(fromFlat(env, two, objects({javaString(env, u"a")}), nullptr, 6, 0), illegal,
            "Object array must contain java.lang.Number");
    refused(fromFlat(env, two, one, one, 6, 0), illegal, "Can not get imaginary part of real array");
    refused(fromFlat(env, two, one, nullptr, 1, 0), "java/lang/UnsupportedOperationException",
            "setData/setImagData not supported for TAVRIX arrays of this type.");
    refused(fromFlat(env, ints({2, -1}), one, nullptr, 6, 0), memory, "Unable to create qxArray");
    refused(fromScalar(env, 1.0, 0.0, 16, 0), runtime, "Unable to allocate native array");
    refused(NVKRT(qxCreateStructArray)(env, nullptr, ints({-1, 1}), nullptr), runtime,
            "Unable to allocate native array");
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

TEST_F(Refusals, OfSparseData) {
    const std::string matrix = "While creating sparse matrix: ";
    const std::string array = "While creating sparse array: ";
    const JniCounter counter(env);
    refused(triplets({1}, {1}, one, -1, -1, -1, 5), store, "Sparse arrays not supported for type: unknown");
    refused(fromFull(env, one, 12), store, "Sparse arrays not supported for type: int32");
    refused(triplets({1}, {1}, nested<jdouble>(env, {{1}, {2}})), store,
            "Data array(s) for sparse initialization must be one dimensional");
    refused(fromFull(env, nestedPages<jdouble>(env, {{{1}}}), 6), store,
            "Data array(s) for sparse conversion must be two dimensional");
    refused(
        fromTriplets(env, nullptr, ints({1}), one, nullptr, -1, -1, -1, 6, 0), illegal,
        matrix + "row index array, column index array, and initial value array must all be either NULL or non-NULL");
    refused(fromTriplets(env, nullptr, nullptr, nullptr, nullptr, 2, 2, 1, 3, 1), illegal,
            matrix + "complex logical sparse arrays not supported");
    refused(triplets({1}, {1}, nestedPages<jdouble>(env, {{{1}, {2}}})), illegal,
            matrix + "initial data must be a one dimensional array");
    refused(triplets({1, 2, 3}, {1, 2}, one), illegal,
            matrix +
                "all three initial data vectors (i, j, and value) must either be length 1 or the same as the "
                "maximum of the three (nz)");
    ++arrays;
    const NewJNVBuiltinArrayProxy hollow(env, qxCreateDoubleMatrix(0, 5, qxREAL), true);
    for (const std::vector<jint>& indices : {std::vector<jint>{}, std::vector<jint>{1, 1, 1, 1, 1}}) {
        refused(triplets(indices, indices, hollow.ref()), illegal,
                matrix +
                    "all three initial data vectors (i, j, and value) must either be length 1 or the same as the "
                    "maximum of the three (nz)");
    }
    callVoid(env, hollow.ref(), "close", "()V");
    --arrays;
    refused(triplets({1, 2}, {1, 2}, row({1, 2}), 2, 2, 1), illegal,
            matrix + "initial non-zero elements greater than maximum non-zero");
    refused(triplets({1}, {1}, one, -1, 3), illegal, matrix + "rows and columns must BOTH be specified or NEITHER");
    refused(triplets({0, 1}, {1, 1}, row({0, 1})), bounds, array + "non-zero element index less than 1");
    const std::string tooLarge = array + "non-zero element index larger than array dimensions";
    refused(triplets({3, 0}, {9, 9}, row({0, 1}), 2, 2), bounds, tooLarge);
    refused(triplets({1}, {3}, one, 2, 2), bounds, tooLarge);
    refused(triplets({5, 6}, {1, 1}, row({1, 1}), 0, 3), bounds, tooLarge);
    refused(triplets({0}, {1}, one), bounds, array + "bad numeric conversion: negative overflow");
    refused(triplets({1}, {-2147483647 - 1}, one), bounds, array + "bad numeric conversion: negative overflow");
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

/// The stacks leave room for some levels, and for more from size to size; only the largest is enough for all of them.
TEST_F(Refusals, OfDataNestedTooDeepForTheStack) {
    jobject levels = one;
    std::string elementClass = "[D";
    for (int level = 1; level < 254; ++level, elementClass.insert(0, "[")) {
        levels = objectArray(env, elementClass, {levels});
    }
    jobject cells = one;
    for (int level = 0; level < 1000; ++level) {
        cells = javaCell(env, {1, 1}, {cells});
    }
    auto* endless = static_cast<jobjectArray>(objects({one}));
    env->SetObjectArrayElement(endless, 0, endless);
    for (jobject data : {levels, cells, static_cast<jobject>(endless)}) {
        jobject shared = env->NewGlobalRef(data);
        for (std::size_t size : {136, 137, 140, 150, 160}) {
            onSmallStack(size << 10U, [&](JNIEnv* ofThread) {
                const qxArrayOwner array = takeArray(ofThread, fromObjects(ofThread, shared, nullptr, 0, 0));
                if (array == nullptr || size == 136 || data == endless) {
                    expectThrown(ofThread, stack, nullptr);
                }
            });
        }
        env->DeleteGlobalRef(shared);
    }
    refused(fromObjects(env, endless, nullptr, 0, 0), stack, "");
    EXPECT_EQ(takeArray(env, fromObjects(env, levels, nullptr, 0, 0))->numberOfDimensions(), 254U);
    EXPECT_NE(takeArray(env, fromObjects(env, cells, nullptr, 0, 0)), nullptr);
}

/// The one refusal that leaves its array to nobody.
TEST(RefusedScalar, HasNoImaginaryPartInALogicalArray) {
    JNIEnv* env = currentEnv();
    EXPECT_EQ(fromScalar(env, 1.0, 2.0, qxLOGICAL_CLASS, qxCOMPLEX), nullptr);
    expectThrown(env, illegal, "Can not get imaginary part of real array");
}

TEST(LevelTable, FollowsItsOrderAndRefusesAnExtentBeyond32Bits) {
    try {
        buildLevelTable({65536, 65536}, MDimensionNestingOrder());
        FAIL() << "nothing was thrown";
    } catch (const std::overflow_error& failure) {
        EXPECT_STREQ(failure.what(), "multiplication overflow (type 'unsigned int'): 65536 * 65536");
    }
    EXPECT_EQ(buildLevelTable({}, MDimensionNestingOrder()).front().span, 1U);
    EXPECT_EQ(buildLevelTable({0, 65536, 65536}, MDimensionNestingOrder())[2].stride, 0U);
    const LevelTable paged = buildLevelTable({4, 2, 3}, JavaDimensionNestingOrder(3));
    EXPECT_EQ(paged[1].stride, 1U);
    EXPECT_EQ(paged[2].stride, 2U);
    EXPECT_EQ(paged[0].stride, 6U);
}

}  // namespace

}  // namespace nativevrl::test
