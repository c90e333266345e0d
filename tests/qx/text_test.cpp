#include "support.h"

#include <cmath>

namespace {

using Display = QxTest;

TEST_F(Display, ChoosesOneFormForTheNumbersOfAnArray) {
    const std::pair<std::vector<double>, const char*> cases[] = {{{1, 20, -3}, "1  20  -3\n"},
                                                                 {{0.5, 20, -3.25}, "0.5000  20.0000  -3.2500\n"},
                                                                 {{M_PI}, "3.1416\n"},
                                                                 {{1, NAN, INFINITY, -INFINITY}, "1  NaN  Inf  -Inf\n"},
                                                                 {{-0.0}, "0\n"},
                                                                 {{123456.5}, "1.2346e+05\n"},
                                                                 {{1e-5, 1}, "1.0000e-05  1.0000e+00\n"},
                                                                 {{9999999999}, "9999999999\n"},
                                                                 {{1e15, 0}, "1.0000e+15  0.0000e+00\n"}};
    for (const auto& [elements, text] : cases) {
        const qxArrayOwner row(qxCreateDoubleMatrix(1, static_cast<std::uint32_t>(elements.size()), qxREAL));
        std::copy(elements.begin(), elements.end(), realOf<double>(row));
        EXPECT_EQ(qxToText(row.get()), text);
        const qxArrayOwner single(qxCreateConvertedCopy(row.get(), qxSINGLE_CLASS));
        if (elements[0] < 9999999999) {
            EXPECT_EQ(qxToText(single.get()), text);
        }
    }
}

TEST_F(Display, AlignsRowsAndColumns) {
    EXPECT_EQ(qxToText(matrixOf<double>(qxDOUBLE_CLASS, 2, 2, {1, 100, -20, 3}).get()), "  1  -20\n100    3\n");
    EXPECT_EQ(qxToText(matrixOf<std::uint8_t>(qxLOGICAL_CLASS, 2, 2, {1, 0, 0, 1}).get()), "1  0\n0  1\n");
    EXPECT_EQ(qxToText(matrixOf<std::int8_t>(qxINT8_CLASS, 1, 2, {-128, 7}).get()), "-128  7\n");
    EXPECT_EQ(qxToText(matrixOf<std::uint64_t>(qxUINT64_CLASS, 1, 1, {~std::uint64_t{0}}).get()),
              "18446744073709551615\n");
    const qxArrayOwner complex(qxCreateDoubleMatrix(2, 1, qxCOMPLEX));
    realOf<double>(complex)[0] = 1.5;
    imagOf<double>(complex)[0] = -2;
    realOf<double>(complex)[1] = -10;
    imagOf<double>(complex)[1] = 33;
    EXPECT_EQ(qxToText(complex.get()), "  1.5000 -  2.0000i\n-10.0000 + 33.0000i\n");
}

TEST_F(Display, HeadsThePagesWithTheirSubscripts) {
    const std::uint32_t extents[] = {1, 2, 2, 2};
    const qxArrayOwner array(qxCreateNumericArray(4, extents, qxINT32_CLASS, qxREAL));
    for (int i = 0; i < 8; ++i) {
        realOf<std::int32_t>(array)[i] = i;
    }
    EXPECT_EQ(qxToText(array.get()), "(:,:,1,1)\n0  1\n(:,:,2,1)\n2  3\n(:,:,1,2)\n4  5\n(:,:,2,2)\n6  7\n");
}

TEST_F(Display, WritesTextAsModifiedUtf8) {
    EXPECT_EQ(qxToText(matrixOf<char16_t>(qxCHAR_CLASS, 2, 3, {u'a', u'd', u'b', u'e', u'c', u'f'}).get()),
              "abc\ndef\n");
    EXPECT_EQ(qxToText(matrixOf<char16_t>(qxCHAR_CLASS, 1, 4, {0, 0xD835, 0xDC9C, 0xE9}).get()),
              "\xC0\x80\xED\xA0\xB5\xED\xB2\x9C\xC3\xA9\n");
}

TEST_F(Display, ListsTheStoredElementsOfASparseMatrix) {
    const qxArrayOwner dense(qxCreateDoubleMatrix(12, 3, qxREAL));
    realOf<double>(dense)[11] = 2.5;
    realOf<double>(dense)[24] = -1;
    const qxArrayOwner sparse(qxMustBeSparse(dense.get()));
    EXPECT_EQ(qxToText(sparse.get()), "(12,1)   2.5000\n(1,3)   -1.0000\n");
    EXPECT_EQ(qxToText(qxArrayOwner(qxCreateSparse(3, 4, 9, qxREAL)).get()),
              "3-by-4 sparse double without stored elements\n");
    EXPECT_EQ(qxToText(qxArrayOwner(qxCreateSparse(3, 0, 0, qxREAL)).get()), "3-by-0 empty sparse double\n");
}

TEST_F(Display, NestsCellsAndStructs) {
    qxArrayOwner record =
        structOf(1, 1, {"name", "values", "\xF0\x9D\x92\x9C"}, {qxCreateString("rod"), rowOf({1, 2}).release()});
    const std::string shown = "name: 'rod'\nvalues:\n  1  2\n\xED\xA0\xB5\xED\xB2\x9C: 0-by-0 empty double\n";
    EXPECT_EQ(qxToText(record.get()), shown);

    const qxArrayOwner cell = cellOf(2, 3,
                                     {qxCreateDoubleScalar(0.5), record.release(), qxCreateFunctionHandle("solve"),
                                      qxCreateOpaque("Stream", nullptr, nullptr), qxCreateString("")});
    EXPECT_EQ(qxToText(cell.get()),
              "2-by-3 cell\n  (1,1): 0.5000\n  (2,1):\n    name: 'rod'\n    values:\n      1  2\n"
              "    \xED\xA0\xB5\xED\xB2\x9C: 0-by-0 empty double\n"
              "  (1,2): @solve\n  (2,2): <Stream>\n  (1,3): 0-by-0 empty char\n  (2,3): 0-by-0 empty double\n");
}

TEST_F(Display, NumbersTheElementsOfAStructArray) {
    const qxArrayOwner array = structOf(2, 1, {"x"}, {nullptr, qxCreateLogicalScalar(true)});
    EXPECT_EQ(qxToText(array.get()), "2-by-1 struct\n  (1,1):\n    x: 0-by-0 empty double\n  (2,1):\n    x: 1\n");
    EXPECT_EQ(qxToText(qxArrayOwner(qxCreateStructMatrix(1, 1, 0, nullptr)).get()), "1-by-1 struct without fields\n");
}

TEST_F(Display, SaysHowMuchIsLeftOut) {
    const std::string matrix = qxToText(qxArrayOwner(qxCreateDoubleMatrix(1000, 70, qxREAL)).get());
    EXPECT_NE(matrix.find("... 800 more rows\n"), std::string::npos);
    EXPECT_NE(matrix.find("... 20 more columns\n"), std::string::npos);
    const std::string cell = qxToText(qxArrayOwner(qxCreateCellMatrix(1, 5000)).get());
    EXPECT_NE(cell.find("  ... 4800 more elements\n"), std::string::npos);
    const std::string text = qxToText(qxArrayOwner(qxCreateString(std::string(15000, 'x').c_str())).get());
    EXPECT_EQ(text, std::string(10000, 'x') + "\n... 5000 more columns\n");
    const std::uint32_t extents[] = {1, 1, 60};
    const std::string pages = qxToText(qxArrayOwner(qxCreateNumericArray(3, extents, qxINT8_CLASS, qxREAL)).get());
    EXPECT_NE(pages.find("... 40 more pages\n"), std::string::npos);
}

}  // namespace
