#include "randomarray.h"
#include "support.h"

#include <cmath>

namespace {

using Sparse = RandomQxTest;

TEST_F(Sparse, MayHaveMorePlacesThanADenseArrayButNoExtentsOutOfRange) {
    const qxArrayOwner array(qxCreateSparse(0x7FFFFFFF, 1000, 1, qxREAL));
    ASSERT_TRUE(array);
    EXPECT_EQ(qxGetNumberOfElements(array.get()), std::size_t{0x7FFFFFFF} * 1000);
    const std::int64_t bad[][2] = {{-1, 3}, {3, -1}, {-1, -1}, {0x80000000LL, 1}, {1, 0x80000000LL}, {1LL << 40U, 1}};
    for (const auto& extents : bad) {
        EXPECT_FALSE(qxCreateSparse(extents[0], extents[1], 1, qxREAL)) << extents[0] << " " << extents[1];
        EXPECT_FALSE(qxCreateSparseLogicalMatrix(extents[0], extents[1], 1)) << extents[0] << " " << extents[1];
    }
}

TEST_F(Sparse, ComesOutOfADenseMatrixByItsNonZeros) {
    const qxArrayOwner dense = matrixOf<double>(qxDOUBLE_CLASS, 2, 4, {0, 1, -0.0, 0, 0, 0, NAN, 3});
    const qxArrayOwner sparse(qxMustBeSparse(dense.get()));
    ASSERT_TRUE(sparse);
    EXPECT_EQ(std::vector<std::uint32_t>(sparse->columnStartTable(), sparse->columnStartTable() + 5),
              (std::vector<std::uint32_t>{0, 1, 1, 1, 3}));
    EXPECT_EQ(std::vector<std::uint32_t>(sparse->rowIndexTable(), sparse->rowIndexTable() + 3),
              (std::vector<std::uint32_t>{1, 0, 1}));
    EXPECT_EQ(realOf<double>(sparse)[0], 1);
    EXPECT_TRUE(std::isnan(realOf<double>(sparse)[1]));
    EXPECT_EQ(sparse->capacity(), 3U);
    const qxArrayOwner again(qxMustBeSparse(sparse.get()));
    EXPECT_TRUE(qxSharesStorage(again.get(), sparse.get()));
}

TEST_F(Sparse, KeepsAnElementOfWhichEitherPartIsNotZero) {
    const qxArrayOwner dense(qxCreateDoubleMatrix(1, 3, qxCOMPLEX));
    realOf<double>(dense)[0] = 1;
    imagOf<double>(dense)[2] = 2;
    const qxArrayOwner sparse(qxMustBeSparse(dense.get()));
    EXPECT_EQ(sparse->columnStartTable()[3], 2U);
    EXPECT_EQ(imagOf<double>(sparse)[1], 2);
    EXPECT_EQ(realOf<double>(sparse)[1], 0);
}

TEST_F(Sparse, GoesThroughDenseAndBack) {
    forRounds(300, [&] {
        const qxArrayOwner logical(qxCreateNumericMatrix(random_() % 7, random_() % 7, qxLOGICAL_CLASS, qxREAL));
        for (std::size_t i = 0; i < qxGetNumberOfElements(logical.get()); ++i) {
            realOf<std::uint8_t>(logical)[i] = random_() % 3 == 0;
        }
        const qxArrayOwner sparse(qxMustBeSparse(logical.get()));
        ASSERT_NE(formOf(sparse.get()), std::vector<unsigned char>());
        const qxArrayOwner dense(qxCreateConvertedCopy(sparse.get(), qxUINT8_CLASS));
        const qxArrayOwner expected(qxCreateConvertedCopy(logical.get(), qxUINT8_CLASS));
        ASSERT_TRUE(areSame(dense.get(), expected.get()));
    });
}

TEST_F(Sparse, IsRefusedForOtherClassesAndShapes) {
    const std::uint32_t extents[] = {2, 2, 2};
    const qxArrayOwner deep(qxCreateNumericArray(3, extents, qxDOUBLE_CLASS, qxREAL));
    EXPECT_FALSE(qxMustBeSparse(deep.get()));
    const qxArrayOwner single(qxCreateNumericMatrix(2, 2, qxSINGLE_CLASS, qxREAL));
    EXPECT_FALSE(qxMustBeSparse(single.get()));
    const qxArrayOwner cell(qxCreateCellMatrix(2, 2));
    EXPECT_FALSE(qxMustBeSparse(cell.get()));
}

}  // namespace
