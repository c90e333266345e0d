#include "testcomponent.h"

#include "krt/component.h"

#include <gtest/gtest.h>

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

struct Reading {
    const char* kind;
    qxArray* (*value)();
    const char* result;  ///< text of the result, or
    const char* error;   ///< the message of the failure after "read: argument 2 (value)"
};

TEST(ComponentInterface, ReadsEveryKindAndNamesWhatIsWrong) {
    const Reading readings[] = {
        {"scalar", [] { return scalar(2.5); }, "2.500000", nullptr},
        {"scalar", [] { return single<std::int64_t>(qxINT64_CLASS, -7); }, "-7.000000", nullptr},
        {"scalar", [] { return single<float>(qxSINGLE_CLASS, 0.5F); }, "0.500000", nullptr},
        {"scalar",
         [] {
             return row({1, 2});
         },
         nullptr, " is a 1-by-2 double array, expected a real scalar"},
        {"scalar", complexScalar, nullptr, " is a 1-by-1 complex double array, expected a real scalar"},
        {"scalar", [] { return text("x"); }, nullptr, " is a 1-by-1 char array, expected a real scalar"},
        {"integer", [] { return scalar(10); }, "10", nullptr},
        {"integer", [] { return scalar(2.5); }, nullptr, " is 2.500000, expected a whole number from 0 to 10"},
        {"integer", [] { return scalar(11); }, nullptr, " is 11.000000, expected a whole number from 0 to 10"},
        {"integer", [] { return scalar(qxGetNaN()); }, nullptr, " is nan, expected a whole number from 0 to 10"},
        {"logical", [] { return qxCreateLogicalScalar(true); }, "yes", nullptr},
        {"text", [] { return text("\xC3\xA9t\xC3\xA9"); }, "\xC3\xA9t\xC3\xA9", nullptr},
        {"text", [] { return text(""); }, "", nullptr},
        {"text", [] { return numeric(2, 2, qxCHAR_CLASS); }, nullptr,
         " is a 2-by-2 char array, expected a row of text"},
        {"sum", [] { return single<std::uint8_t>(qxUINT8_CLASS, 200); }, "200.000000", nullptr},
        {"sum", sparse, "4.000000", nullptr},
        {"sum", [] { return cellOf({}); }, nullptr, " is a 1-by-0 cell array, expected a real matrix"},
        {"length",
         [] {
             return row({1, 2, 3});
         },
         "3", nullptr},
        {"length", [] { return numeric(0, 0, qxDOUBLE_CLASS); }, "0", nullptr},
        {"length", [] { return numeric(2, 2, qxDOUBLE_CLASS); }, nullptr,
         " is a 2-by-2 double array, expected a real vector"},
        {"square", [] { return numeric(3, 3, qxDOUBLE_CLASS); }, "3", nullptr},
        {"square",
         [] {
             return row({1, 2});
         },
         nullptr, " is 1-by-2, expected a square matrix"},
        {"four", [] { return row({1}); }, nullptr, " has 1 element, expected 4"},
        {"int16", [] { return single<std::int16_t>(qxINT16_CLASS, -3); }, "-3", nullptr},
        {"int16", [] { return scalar(1); }, nullptr, " is a 1-by-1 double array, expected a full int16 array"},
        {"sparse", sparse, "1 of 2", nullptr},
        {"sparse",
         [] {
             return row({0, 5, 0});
         },
         "1 of 3", nullptr},
        {"sparse", [] { return text("x"); }, nullptr, " is a 1-by-1 char array, expected a real sparse matrix"},
        {"complex", complexScalar, "1.000000+2.000000i", nullptr},
        {"cell",
         [] {
             return cellOf({scalar(1), text("two")});
         },
         "two", nullptr},
        {"cell",
         [] {
             return cellOf({scalar(1), scalar(2)});
         },
         nullptr, ", element 1 is a 1-by-1 double array, expected a row of text"},
        {"cell", [] { return cellOf({scalar(1)}); }, nullptr, ", element 1 is missing, expected a row of text"},
        {"field", [] { return options("tol", 0.25); }, "0.250000", nullptr},
        {"field", [] { return options("other", 1); }, "0.500000", nullptr},
        {"field", [] { return scalar(1); }, nullptr, " is a 1-by-1 double array, expected a struct array"},
        {"function", [] { return qxCreateFunctionHandle("add"); }, "add", nullptr},
        {"java", [] { return scalar(1); }, nullptr, " is a 1-by-1 double array, expected a Java object"},
    };
    TestInstance instance;
    for (const Reading& reading : readings) {
        if (reading.error == nullptr) {
            const auto result = instance.call1("read", {text(reading.kind), reading.value()});
            EXPECT_EQ(qxGetString(result.get()), reading.result) << reading.kind;
        } else {
            const auto failure = instance.failureOf("read", {text(reading.kind), reading.value()});
            EXPECT_EQ(failure.message, std::string("read: argument 2 (value)") + reading.error) << reading.kind;
        }
    }
    EXPECT_EQ(instance.failureOf("read", {text("sum")}).message,
              "read: argument 2 (value) is missing, expected a real matrix");
    EXPECT_EQ(instance.failureOf("add", {row({1, 2, 3}), row({1})}).message,
              "add: argument 2 (b) has 1 column, expected 3");
}

TEST(ComponentInterface, ReadsFirstElementsOfEveryClass) {
    const qxArrayOwner arrays[] = {
        qxArrayOwner(single<std::int8_t>(qxINT8_CLASS, 3)),   qxArrayOwner(single<std::uint8_t>(qxUINT8_CLASS, 3)),
        qxArrayOwner(single<std::int16_t>(qxINT16_CLASS, 3)), qxArrayOwner(single<std::uint16_t>(qxUINT16_CLASS, 3)),
        qxArrayOwner(single<std::int32_t>(qxINT32_CLASS, 3)), qxArrayOwner(single<std::uint32_t>(qxUINT32_CLASS, 3)),
        qxArrayOwner(single<std::int64_t>(qxINT64_CLASS, 3)), qxArrayOwner(single<std::uint64_t>(qxUINT64_CLASS, 3)),
        qxArrayOwner(single<float>(qxSINGLE_CLASS, 3)),       qxArrayOwner(scalar(3)),
        qxArrayOwner(single<char16_t>(qxCHAR_CLASS, u'\x03'))};
    for (const qxArrayOwner& array : arrays) {
        EXPECT_EQ(krtScalar(array.get()), 3.0) << qxGetClassID(array.get());
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

}  // namespace
