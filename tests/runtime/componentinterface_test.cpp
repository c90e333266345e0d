#include "testcomponent.h"

#include "krt/component.h"
#include "vrlbase/exceptions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace {

qxArray* numeric(std::uint32_t rows, std::uint32_t columns, qxClassID id) {
    return qxCreateNumericMatrix(rows, columns, id, qxREAL);
}

template <typename T>
qxArray* single(qxClassID id, T value) {
    qxArray* array = numeric(1, 1, id);
    *static_cast<T*>(array->realData()) = value;
    return array;
}

qxArray* complexScalar() {
    qxArray* array = qxCreateDoubleMatrix(1, 1, qxCOMPLEX);
    *static_cast<double*>(array->realData()) = 1;
    *static_cast<double*>(array->imagData()) = 2;
    return array;
}

/// 3-by-2, with 4 in the last row of the last column.
qxArray* sparse() {
    qxArray* array = qxCreateSparse(3, 2, 1, qxREAL);
    array->columnStartTable()[2] = 1;
    array->rowIndexTable()[0] = 2;
    static_cast<double*>(array->realData())[0] = 4;
    return array;
}

qxArray* options(const char* field, double value) {
    const char* fields[] = {field};
    qxArray* array = qxCreateStructMatrix(1, 1, 1, fields);
    qxSetCell(array, 0, scalar(value));
    return array;
}

/// What "read" gives of a value, which it takes over: a text, or what follows the argument's name in its failure.
std::string outcomeOf(TestInstance& instance, const char* kind, qxArray* value) {
    try {
        return qxGetString(instance.call1("read", {text(kind), value}).get());
    } catch (const Norvane::vrl::vrlBaseException& failure) {
        const std::string prefix = "read: argument 2 (value)";
        EXPECT_EQ(failure.getErrorMessage().rfind(prefix, 0), 0U) << failure.getErrorMessage();
        return failure.getErrorMessage().substr(prefix.size());
    }
}

TEST(ComponentInterface, ReadsEveryKindAndNamesWhatIsWrong) {
    const std::tuple<const char*, qxArray*, const char*> readings[] = {
        {"scalar", scalar(2.5), "2.5"},
        {"scalar", single<std::int64_t>(qxINT64_CLASS, -7), "-7"},
        {"scalar", single<float>(qxSINGLE_CLASS, 0.5F), "0.5"},
        {"scalar", row({1, 2}), " is a 1-by-2 double array, expected a real scalar"},
        {"scalar", complexScalar(), " is a 1-by-1 complex double array, expected a real scalar"},
        {"scalar", text("x"), " is a 1-by-1 char array, expected a real scalar"},
        {"integer", scalar(10), "10"},
        {"integer", scalar(2.5), " is 2.5, expected a whole number from 0 to 10"},
        {"integer", scalar(11), " is 11, expected a whole number from 0 to 10"},
        {"integer", scalar(NAN), " is nan, expected a whole number from 0 to 10"},
        {"large", scalar(0x1p62), "4611686018427387904"},
        {"large", scalar(0x1p63), " is 9.22337203685478e+18, expected a whole number from 0 to 9223372036854775807"},
        {"logical", qxCreateLogicalScalar(true), "yes"},
        {"text", text("caf\xC3\xA9"), "caf\xC3\xA9"},
        {"text", numeric(0, 0, qxCHAR_CLASS), ""},
        {"text", scalar(1), " is a 1-by-1 double array, expected a row of text"},
        {"text", numeric(2, 2, qxCHAR_CLASS), " is a 2-by-2 char array, expected a row of text"},
        {"sum", single<std::uint8_t>(qxUINT8_CLASS, 200), "200"},
        {"sum", sparse(), "4"},
        {"sum", cellOf({}), " is a 1-by-0 cell array, expected a real matrix"},
        {"length", row({1, 2, 3}), "3"},
        {"length", numeric(0, 0, qxDOUBLE_CLASS), "0"},
        {"length", numeric(2, 2, qxDOUBLE_CLASS), " is a 2-by-2 double array, expected a real vector"},
        {"square", numeric(3, 3, qxDOUBLE_CLASS), "3"},
        {"square", row({1, 2}), " is 1-by-2, expected a square matrix"},
        {"four", row({1}), " has 1 element, expected 4"},
        {"int16", single<std::int16_t>(qxINT16_CLASS, -3), "-3"},
        {"int16", scalar(1), " is a 1-by-1 double array, expected a full int16 array"},
        {"sparse", sparse(), "1 of 2"},
        {"sparse", row({0, 5, 0}), "1 of 3"},
        {"sparse", text("x"), " is a 1-by-1 char array, expected a real sparse matrix"},
        {"complex", complexScalar(), "1+2i"},
        {"cell", cellOf({scalar(1), text("two")}), "two"},
        {"cell", cellOf({scalar(1), scalar(2)}), ", element 1 is a 1-by-1 double array, expected a row of text"},
        {"cell", cellOf({scalar(1)}), ", element 1 is missing, expected a row of text"},
        {"field", options("tol", 0.25), "0.25"},
        {"field", options("other", 1), "0.5"},
        {"field", scalar(1), " is a 1-by-1 double array, expected a struct array"},
        {"function", qxCreateFunctionHandle("add"), "add"},
        {"java", scalar(1), " is a 1-by-1 double array, expected a Java object"},
    };
    TestInstance instance;
    for (const auto& [kind, value, outcome] : readings) {
        EXPECT_EQ(outcomeOf(instance, kind, value), outcome) << kind;
    }
}

TEST(ComponentInterface, ReadsFirstElementsOfEveryClass) {
    const qxArrayOwner three(scalar(3));
    for (const qxClassID id : {qxCHAR_CLASS, qxDOUBLE_CLASS, qxSINGLE_CLASS, qxINT8_CLASS, qxUINT8_CLASS, qxINT16_CLASS,
                               qxUINT16_CLASS, qxINT32_CLASS, qxUINT32_CLASS, qxINT64_CLASS, qxUINT64_CLASS}) {
        EXPECT_EQ(krtScalar(qxArrayOwner(qxCreateConvertedCopy(three.get(), id)).get()), 3.0) << id;
    }
    EXPECT_EQ(krtScalar(qxArrayOwner(sparse()).get()), 0.0);
    EXPECT_TRUE(qxIsNaN(krtScalar(qxArrayOwner(numeric(0, 0, qxDOUBLE_CLASS)).get())));
    EXPECT_TRUE(qxIsNaN(krtScalar(qxArrayOwner(cellOf({scalar(1)})).get())));
    EXPECT_TRUE(qxIsNaN(krtScalar(nullptr)));
}

TEST(ComponentInterface, RefusesWhatIsTooLarge) {
    EXPECT_EQ(krtMakeDoubleMatrix(std::size_t{1} << 31U, 1), nullptr);
    EXPECT_EQ(krtMakeDoubleMatrix(1, std::size_t{1} << 40U), nullptr);
    EXPECT_EQ(krtText(nullptr), nullptr);
    EXPECT_EQ(krtDoubles(nullptr), nullptr);
}

TEST(ComponentInterface, ShowsAnArrayAsTheArrayLibraryDoes) {
    const qxArrayOwner array(row({1, 2.5}));
    char* shown = nullptr;
    ASSERT_EQ(vrlcppArrayToString(array.get(), &shown), 0);
    EXPECT_EQ(shown, qxToText(array.get()));
    vrlcppFreeString(shown);
    vrlcppFreeString(nullptr);
    EXPECT_NE(vrlcppArrayToString(nullptr, &shown), 0);
    EXPECT_NE(vrlcppArrayToString(array.get(), nullptr), 0);
}

// Published values of the hash.
TEST(ByteHash, IsTheWellKnownOne) {
    EXPECT_EQ(vrlHashNBytes(0, 0, nullptr), 0x02CC5D05U);
    EXPECT_EQ(vrlHashNBytes(0, 1, "a"), 0x550D7456U);
    EXPECT_EQ(vrlHashNBytes(0, 3, "abc"), 0x32D153FFU);
    EXPECT_NE(vrlHashNBytes(1, 3, "abc"), vrlHashNBytes(0, 3, "abc"));
}

}  // namespace
