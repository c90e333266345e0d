#include "randomarray.h"
#include "support.h"

#include <cmath>
#include <limits>

namespace {

using Conversion = RandomQxTest;

TEST_F(Conversion, RoundsAndSaturates) {
    // Each number and what it becomes, which is exact in a double.
    const std::pair<qxClassID, std::vector<std::pair<double, double>>> table[] = {
        {qxINT8_CLASS, {{2.5, 3}, {-2.5, -3}, {2.4999, 2}, {127.4, 127}, {-128.5, -128}}},
        {qxINT16_CLASS, {{-0.5, -1}, {1e9, 32767}, {-1e9, -32768}}},
        {qxINT32_CLASS, {{0.49999999999999994, 0}, {NAN, 0}, {-INFINITY, -2147483648.0}}},
        {qxINT64_CLASS, {{4503599627370497.5, 4503599627370498.0}}},
        {qxUINT8_CLASS, {{254.5, 255}, {255.5, 255}, {-0.4, 0}, {NAN, 0}}},
        {qxUINT32_CLASS, {{INFINITY, 4294967295.0}}},
        {qxUINT64_CLASS, {{-7, 0}, {9007199254740993.0, 9007199254740992.0}}},
        {qxLOGICAL_CLASS, {{NAN, 0}, {0.25, 1}, {-0.0, 0}, {256, 1}}},
        {qxCHAR_CLASS, {{NAN, 0}, {65.5, 66}, {1e6, 65535}}},
        {qxSINGLE_CLASS, {{1e300, INFINITY}, {0.5, 0.5}}},
    };
    for (const auto& [id, numbers] : table) {
        for (const auto& [from, expected] : numbers) {
            const qxArrayOwner converted(qxCreateConvertedCopy(rowOf({from}).get(), id));
            ASSERT_TRUE(converted);
            EXPECT_EQ(qxGetClassID(converted.get()), id);
            const qxArrayOwner back(qxCreateConvertedCopy(converted.get(), qxDOUBLE_CLASS));
            EXPECT_EQ(*realOf<double>(back), expected) << from << " into class " << id;
        }
    }
}

TEST_F(Conversion, SaturatesTheWideIntegers) {
    const qxArrayOwner source = rowOf({1e30, -1e30});
    const qxArrayOwner narrow(qxCreateConvertedCopy(source.get(), qxINT64_CLASS));
    EXPECT_EQ(realOf<std::int64_t>(narrow)[0], std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(realOf<std::int64_t>(narrow)[1], std::numeric_limits<std::int64_t>::min());
    const qxArrayOwner wide(qxCreateConvertedCopy(source.get(), qxUINT64_CLASS));
    EXPECT_EQ(realOf<std::uint64_t>(wide)[0], std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(realOf<std::uint64_t>(wide)[1], 0U);
    const qxArrayOwner crossed(qxCreateConvertedCopy(wide.get(), qxINT64_CLASS));
    EXPECT_EQ(realOf<std::int64_t>(crossed)[0], std::numeric_limits<std::int64_t>::max());
    const qxArrayOwner back(qxCreateConvertedCopy(narrow.get(), qxUINT64_CLASS));
    EXPECT_EQ(realOf<std::uint64_t>(back)[0], 0x7FFFFFFFFFFFFFFFU);
    EXPECT_EQ(realOf<std::uint64_t>(back)[1], 0U);
}

constexpr qxClassID kClasses[] = {qxLOGICAL_CLASS, qxCHAR_CLASS,   qxDOUBLE_CLASS, qxSINGLE_CLASS,
                                  qxINT8_CLASS,    qxUINT8_CLASS,  qxINT16_CLASS,  qxUINT16_CLASS,
                                  qxINT32_CLASS,   qxUINT32_CLASS, qxINT64_CLASS,  qxUINT64_CLASS};

TEST_F(Conversion, CarriesSmallNumbersBetweenAllClasses) {
    const qxArrayOwner source(qxCreateDoubleMatrix(1, 2, qxCOMPLEX));
    realOf<double>(source)[1] = imagOf<double>(source)[0] = 1;
    const qxArrayOwner real = rowOf({0, 1});
    for (const qxClassID from : kClasses) {
        for (const qxClassID to : kClasses) {
            const qxArrayOwner first(qxCreateConvertedCopy(source.get(), from));
            const qxArrayOwner second(qxCreateConvertedCopy(first.get(), to));
            const qxArrayOwner back(qxCreateConvertedCopy(second.get(), qxDOUBLE_CLASS));
            const auto hasNoImag = [](qxClassID id) { return id == qxLOGICAL_CLASS || id == qxCHAR_CLASS; };
            const qxArray* expected = hasNoImag(from) || hasNoImag(to) ? real.get() : source.get();
            ASSERT_TRUE(areSame(back.get(), expected)) << from << " to " << to;
            EXPECT_FALSE(qxSharesStorage(first.get(), second.get()));
        }
    }
}

/// A sparse matrix as a dense double model; the stored positions only.
std::vector<double> denseModel(const qxArray* sparse) {
    const std::size_t rows = qxGetM(sparse);
    std::vector<double> model(qxGetNumberOfElements(sparse));
    const bool isLogical = qxGetClassID(sparse) == qxLOGICAL_CLASS;
    for (std::size_t column = 0; column < qxGetN(sparse); ++column) {
        for (auto at = sparse->columnStartTable()[column]; at < sparse->columnStartTable()[column + 1]; ++at) {
            model[column * rows + sparse->rowIndexTable()[at]] =
                isLogical ? static_cast<const std::uint8_t*>(sparse->realData())[at]
                          : static_cast<const double*>(sparse->realData())[at];
        }
    }
    return model;
}

TEST_F(Conversion, OfSparseMatricesMatchesTheModel) {
    forRounds(300, [&] {
        const qxArrayOwner source = randomSparse(random_);
        const std::vector<double> model = denseModel(source.get());
        const qxArrayOwner single(qxCreateConvertedCopy(source.get(), qxSINGLE_CLASS));
        ASSERT_FALSE(single->isSparse());
        ASSERT_EQ(qxIsComplex(single.get()), qxIsComplex(source.get()));
        for (std::size_t i = 0; i < model.size(); ++i) {
            const auto expected = static_cast<float>(model[i]);
            const float found = realOf<float>(single)[i];
            ASSERT_TRUE(found == expected || (std::isnan(found) && std::isnan(expected)));
        }
        const qxArrayOwner logical(qxCreateConvertedCopy(source.get(), qxLOGICAL_CLASS));
        ASSERT_TRUE(logical->isSparse());
        const std::vector<double> truths = denseModel(logical.get());
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(truths[i], model[i] != 0 && !std::isnan(model[i]) ? 1 : 0);
        }
        const qxArrayOwner number(qxCreateConvertedCopy(logical.get(), qxDOUBLE_CLASS));
        ASSERT_EQ(denseModel(number.get()), truths);
    });
}

TEST_F(Conversion, IsRefusedWhereThereIsNone) {
    const qxArrayOwner cell(qxCreateCellMatrix(1, 1));
    EXPECT_FALSE(qxCreateConvertedCopy(cell.get(), qxDOUBLE_CLASS));
    EXPECT_FALSE(qxCreateConvertedCopy(rowOf({1}).get(), qxCELL_CLASS));
    EXPECT_FALSE(qxCreateConvertedCopy(rowOf({1}).get(), qxUNKNOWN_CLASS));
    EXPECT_FALSE(qxCreateConvertedCopy(rowOf({1}).get(), static_cast<qxClassID>(99)));
    const qxArrayOwner huge(qxCreateSparse(0x7FFFFFFF, 100, 0, qxREAL));
    ASSERT_TRUE(huge);
    EXPECT_FALSE(qxCreateConvertedCopy(huge.get(), qxSINGLE_CLASS));
}

}  // namespace
