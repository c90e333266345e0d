#include "arrays/natives.h"

#include <array>

namespace nativevrl::test::queries {

class Queries : public JvmTest {
protected:
    /// Class, numbers of dimensions and elements; sparse, complex, empty; stored elements, room for them, fields.
    using Answers = std::array<jint, 9>;

    Answers ask(jobject handle) {
        return {
            NVKRT(qxGetClassID)(env, nullptr, handle),          NVKRT(qxGetNumberOfDimensions)(env, nullptr, handle),
            NVKRT(qxGetNumberOfElements)(env, nullptr, handle), NVKRT(qxIsSparse)(env, nullptr, handle),
            NVKRT(qxIsComplex)(env, nullptr, handle),           NVKRT(qxIsEmpty)(env, nullptr, handle),
            NVKRT(qxGetNumberOfNonZeros)(env, nullptr, handle), NVKRT(qxGetAllocatedNonZeros)(env, nullptr, handle),
            NVKRT(qxGetNumberOfFields)(env, nullptr, handle)};
    }

    std::vector<jint> extents(jobject handle) {
        return toVector<jint>(env, NVKRT(qxGetDimensions)(env, nullptr, handle));
    }
    jint fieldNumber(jobject handle, jstring name) { return NVKRT(qxGetFieldNumber)(env, nullptr, handle, name); }
    jobject fieldNames(jobject handle) { return NVKRT(qxGetFieldNames)(env, nullptr, handle); }
};

constexpr const char* tooBig = "TAVRIX index too big to convert to Java int";

TEST_F(Queries, DescribeEveryKindOfArray) {
    const char* fields[] = {"a", "b"};
    const std::uint32_t cube[] = {2, 3, 4};
    qxArray* sparse = qxCreateSparse(3, 4, 7, qxCOMPLEX);
    std::fill(sparse->columnStartTable() + 2, sparse->columnStartTable() + 5, 1);  // a stored zero counts
    const std::tuple<qxArray*, Answers, std::vector<jint>> cases[] = {
        {nullptr, {qxDOUBLE_CLASS, 0, 0, false, false, true, 0, 0, 0}, {}},
        {qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL),
         {qxUNKNOWN_CLASS, 2, 0, false, false, true, 0, 0, 0},
         {0, 0}},
        {qxCreateNumericArray(3, cube, qxUINT16_CLASS, qxCOMPLEX),
         {qxUINT16_CLASS, 3, 24, false, true, false, 24, 24, 0},
         {2, 3, 4}},
        {qxCreateString("text"), {qxCHAR_CLASS, 2, 4, false, false, false, 4, 4, 0}, {1, 4}},
        {sparse, {qxDOUBLE_CLASS, 2, 12, true, true, false, 1, 7, 0}, {3, 4}},
        {qxCreateSparseLogicalMatrix(0, 4, 0), {qxLOGICAL_CLASS, 2, 0, true, false, true, 0, 0, 0}, {0, 4}},
        {qxCreateStructMatrix(2, 1, 2, fields), {qxSTRUCT_CLASS, 2, 2, false, false, false, 2, 2, 2}, {2, 1}},
        {qxCreateCellMatrix(2, 2), {qxCELL_CLASS, 2, 4, false, false, false, 4, 4, 0}, {2, 2}},
        {qxCreateFunctionHandle("f"), {qxFUNCTION_CLASS, 2, 1, false, false, false, 1, 1, 0}, {1, 1}},
    };
    for (const auto& [array, answers, dimensions] : cases) {
        const Held held(env, array);
        EXPECT_EQ(ask(held.handle), answers);
        EXPECT_EQ(extents(held.handle), dimensions);
        expectNoThrow(env);
    }
}

TEST_F(Queries, RefuseSizesBeyondJava) {
    const Held held(env, qxCreateSparse(65536, 65536, 0, qxREAL));
    expectRefused(env, NVKRT(qxGetNumberOfElements)(env, nullptr, held.handle), "java/lang/IndexOutOfBoundsException",
                  tooBig);
    EXPECT_EQ(NVKRT(qxGetAllocatedNonZeros)(env, nullptr, held.handle), 0);
}

TEST_F(Queries, FindFields) {
    const char* fields[] = {"a", "\xC3\xA9t\xC3\xA9"};
    const Held record(env, qxCreateStructMatrix(1, 1, 2, fields));
    const Held cell(env, qxCreateCellMatrix(1, 1));
    const jstring second = javaString(env, u"\u00E9t\u00E9");
    const jobject null = newHandle(env, nullptr);
    EXPECT_EQ(fieldNumber(record.handle, javaString(env, u"a")), 0);
    EXPECT_EQ(fieldNumber(record.handle, second), 1);
    EXPECT_EQ(fieldNumber(record.handle, nullptr), -1);
    EXPECT_EQ(fieldNumber(cell.handle, second), -1);
    EXPECT_EQ(fieldNumber(null, second), -1);
    expectNoThrow(env);
    expectRefused(env, fieldNumber(record.handle, javaString(env, u"none")), "java/lang/IndexOutOfBoundsException",
                  tooBig);
    const jobject names = fieldNames(record.handle);
    ASSERT_EQ(lengthOf(env, names), 2u);
    EXPECT_EQ(classNameOf(env, names), "[Ljava/lang/String;");
    EXPECT_EQ(toUtf16(env, elementAt(env, names, 1)), u"\u00E9t\u00E9");
    EXPECT_EQ(lengthOf(env, fieldNames(cell.handle)), 0u);
    EXPECT_EQ(lengthOf(env, fieldNames(null)), 0u);
}

TEST_F(Queries, KnowTheSizeOfEveryClass) {
    const jint sizes[] = {0, 4, 4, 1, 2, 0, 8, 4, 1, 1, 2, 2, 4, 4, 8, 8, 0, 4, 4, 0, 0};
    for (jint id = 0; id <= 20; ++id) {
        EXPECT_EQ(NVKRT(qxGetElementSize)(env, nullptr, id), sizes[id]) << id;
    }
    EXPECT_EQ(NVKRT(qxGetElementSize)(env, nullptr, -1), 0);
}

TEST_F(Queries, TellSpecialNumbersApart) {
    const double eps = NVKRT(qxGetEps)(env, nullptr);
    EXPECT_EQ(eps, std::nextafter(1.0, 2.0) - 1.0);
    const double inf = NVKRT(qxGetInf)(env, nullptr);
    for (const double value :
         {0.0, eps, inf, -inf, NVKRT(qxGetNaN)(env, nullptr), std::numeric_limits<double>::max()}) {
        EXPECT_EQ(NVKRT(qxIsFinite)(env, nullptr, value) != 0, std::isfinite(value)) << value;
        EXPECT_EQ(NVKRT(qxIsInf)(env, nullptr, value) != 0, std::isinf(value)) << value;
        EXPECT_EQ(NVKRT(qxIsNaN)(env, nullptr, value) != 0, std::isnan(value)) << value;
    }
}

}  // namespace nativevrl::test::queries
