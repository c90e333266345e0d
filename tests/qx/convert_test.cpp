#include "randomarray.h"
#include "support.h"

#include <cmath>
#include <limits>

namespace {

using Conversion = QxTest;

struct NumberCase {
    double from;
    qxClassID to;
    double expected;  // each is exact in a double
};

std::ostream& operator<<(std::ostream& out, const NumberCase& given) {
    return out << given.from << " into class " << given.to;
}

class NumberConversion : public QxTest, public testing::WithParamInterface<NumberCase> {};

TEST_P(NumberConversion, RoundsAndSaturates) {
    const qxArrayOwner converted(qxCreateConvertedCopy(rowOf({GetParam().from}).get(), GetParam().to));
    ASSERT_TRUE(converted);
    EXPECT_EQ(qxGetClassID(converted.get()), GetParam().to);
    const qxArrayOwner back(qxCreateConvertedCopy(converted.get(), qxDOUBLE_CLASS));
    EXPECT_EQ(*realOf<double>(back), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, NumberConversion,
    testing::Values(NumberCase{2.5, qxINT8_CLASS, 3}, NumberCase{-2.5, qxINT8_CLASS, -3},
                    NumberCase{2.4999, qxINT8_CLASS, 2}, NumberCase{-0.5, qxINT16_CLASS, -1},
                    NumberCase{0.49999999999999994, qxINT32_CLASS, 0}, NumberCase{1e9, qxINT16_CLASS, 32767},
                    NumberCase{-1e9, qxINT16_CLASS, -32768}, NumberCase{127.4, qxINT8_CLASS, 127},
                    NumberCase{-128.5, qxINT8_CLASS, -128}, NumberCase{254.5, qxUINT8_CLASS, 255},
                    NumberCase{255.5, qxUINT8_CLASS, 255}, NumberCase{-0.4, qxUINT8_CLASS, 0},
                    NumberCase{-7, qxUINT64_CLASS, 0}, NumberCase{NAN, qxINT32_CLASS, 0},
                    NumberCase{NAN, qxUINT8_CLASS, 0}, NumberCase{NAN, qxLOGICAL_CLASS, 0},
                    NumberCase{NAN, qxCHAR_CLASS, 0}, NumberCase{INFINITY, qxUINT32_CLASS, 4294967295.0},
                    NumberCase{-INFINITY, qxINT32_CLASS, -2147483648.0}, NumberCase{65.5, qxCHAR_CLASS, 66},
                    NumberCase{1e6, qxCHAR_CLASS, 65535}, NumberCase{0.25, qxLOGICAL_CLASS, 1},
                    NumberCase{-0.0, qxLOGICAL_CLASS, 0}, NumberCase{256, qxLOGICAL_CLASS, 1},
                    NumberCase{1e300, qxSINGLE_CLASS, INFINITY}, NumberCase{0.5, qxSINGLE_CLASS, 0.5},
                    NumberCase{4503599627370497.5, qxINT64_CLASS, 4503599627370498.0},
                    NumberCase{9007199254740993.0, qxUINT64_CLASS, 9007199254740992.0}));

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
    const std::uint64_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    for (int round = 0; round < 300; ++round) {
        const qxArrayOwner source = randomSparse(random);
        const std::vector<double> model = denseModel(source.get());
        const qxArrayOwner single(qxCreateConvertedCopy(source.get(), qxSINGLE_CLASS));
        ASSERT_FALSE(single->isSparse());
        ASSERT_EQ(qxIsComplex(single.get()), qxIsComplex(source.get()));
        for (std::size_t i = 0; i < model.size(); ++i) {
            const auto expected = static_cast<float>(model[i]);
            const float found = realOf<float>(single)[i];
            ASSERT_TRUE(found == expected || (std::isnan(found) && std::isnan(expected))) << "round " << round;
        }
        const qxArrayOwner logical(qxCreateConvertedCopy(source.get(), qxLOGICAL_CLASS));
        ASSERT_TRUE(logical->isSparse());
        const std::vector<double> truths = denseModel(logical.get());
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(truths[i], model[i] != 0 && !std::isnan(model[i]) ? 1 : 0) << "round " << round;
        }
        const qxArrayOwner number(qxCreateConvertedCopy(logical.get(), qxDOUBLE_CLASS));
        ASSERT_EQ(denseModel(number.get()), truths);
    }
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
