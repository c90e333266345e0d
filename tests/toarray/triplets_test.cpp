#include "support/jvmtest.h"
#include "toarray/creatednatives.h"
#include "toarray/datamodel.h"

#include <cmath>
#include <complex>
#include <map>

namespace nativevrl::test {

namespace {

/// Stored elements by column and row, both zero-based.
using Stored = std::map<std::pair<std::uint32_t, std::uint32_t>, std::complex<double>>;

/// Random triplets; lists of one element stand for as many as the others have.
struct Triplets {
    std::vector<jint> rows;
    std::vector<jint> columns;
    std::vector<jdouble> real;
    std::vector<jdouble> imaginary;  // empty for real data

    template <typename T>
    static T at(const std::vector<T>& list, std::size_t i) {
        return list.size() == 1 ? list[0] : list[i];
    }
    std::size_t count() const { return std::max({rows.size(), columns.size(), real.size()}); }
};

Triplets randomTriplets(std::mt19937& random, std::size_t count, std::size_t extent, bool isComplex, bool sorted) {
    Triplets triplets;
    const auto lengthOf = [&] { return randomBelow(random, 5) == 0 ? 1 : count; };
    // Sums of these depend on the order.
    const auto value = [&] { return (randomBelow(random, 4) == 0 ? 1e16 : 1) * (1.0 * randomBelow(random, 5) - 2); };
    for (std::vector<jint>* list : {&triplets.rows, &triplets.columns}) {
        for (std::size_t i = lengthOf(); i > 0; --i) {
            list->push_back(static_cast<jint>(randomBelow(random, extent) + 1));
        }
    }
    if (sorted) {
        std::sort(triplets.columns.begin(), triplets.columns.end());
    }
    for (std::size_t i = lengthOf(); i > 0; --i) {
        triplets.real.push_back(randomBelow(random, 40) == 0 ? std::nan("") : value());
        if (isComplex) {
            triplets.imaginary.push_back(value());
        }
    }
    return triplets;
}

/// Zeros dropped, the rest summed position by position; logical ones are true or true.
Stored modelOf(const Triplets& triplets, bool isLogical) {
    Stored stored;
    for (std::size_t i = 0; i < triplets.count(); ++i) {
        std::complex<double> value = Triplets::at(triplets.real, i);
        if (!triplets.imaginary.empty()) {
            value.imag(Triplets::at(triplets.imaginary, i));
        }
        if (value.real() != 0 || value.imag() != 0) {
            auto& sum = stored[{Triplets::at(triplets.columns, i) - 1, Triplets::at(triplets.rows, i) - 1}];
            sum = isLogical ? 1.0 : sum + value;
        }
    }
    return stored;
}

void expectStored(const qxArray* array, const Stored& expected) {
    ASSERT_NE(array, nullptr);
    ASSERT_TRUE(array->isSparse());
    const std::uint32_t columns = array->get_dimensions()[1];
    ASSERT_EQ(array->columnStartTable()[columns], expected.size());
    const bool isLogical = qxGetClassID(array) == qxLOGICAL_CLASS;
    std::uint32_t column = 0;
    std::uint32_t at = 0;
    for (const auto& [position, value] : expected) {
        while (at >= array->columnStartTable()[column + 1]) {
            ++column;
        }
        EXPECT_EQ(column, position.first);
        EXPECT_EQ(array->rowIndexTable()[at], position.second);
        const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
        EXPECT_PRED2(same, value.real(),
                     isLogical ? static_cast<const std::uint8_t*>(array->realData())[at]
                               : static_cast<const double*>(array->realData())[at]);
        if (qxIsComplex(array)) {
            EXPECT_PRED2(same, value.imag(), static_cast<const double*>(array->imagData())[at]);
        }
        ++at;
    }
}

class SparseTriplets : public JvmTest {
protected:
    qxArrayOwner build(const Triplets& triplets, jint m, jint n, jint room, qxClassID classId) {
        jobject imaginary = triplets.imaginary.empty() ? nullptr : primitiveArray<jdouble>(env, triplets.imaginary);
        jintArray rows = intArray(env, triplets.rows);
        jintArray columns = intArray(env, triplets.columns);
        jobject real = primitiveArray<jdouble>(env, triplets.real);
        const JniCounter counter(env);
        qxArrayOwner array = takeArray(env, fromTriplets(env, rows, columns, real, imaginary, m, n, room, classId,
                                                         imaginary == nullptr ? qxREAL : qxCOMPLEX));
        EXPECT_EQ(counter.localReferences() + counter.pinnedBlocks(), 0);
        return array;
    }
};

TEST_F(SparseTriplets, BecomeWhatTheModelSays) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const bool isLogical = seed % 4 == 0;
        // Extents far above the count are sorted another way.
        const std::size_t extent = seed % 3 == 0 ? 5000 : 1 + randomBelow(random, 20);
        const Triplets triplets =
            randomTriplets(random, 1 + randomBelow(random, 60), extent, !isLogical && seed % 2 == 0, seed % 5 == 0);
        const bool computed = seed % 7 < 3;
        const auto stated = computed ? -1 : static_cast<jint>(extent);
        const jint room = seed % 2 == 0 ? -1 : 100;
        const qxArrayOwner array = build(triplets, stated, stated, room, isLogical ? qxLOGICAL_CLASS : qxDOUBLE_CLASS);
        expectStored(array.get(), modelOf(triplets, isLogical));
        const auto largest = [](const std::vector<jint>& list) { return *std::max_element(list.begin(), list.end()); };
        EXPECT_EQ(array->get_dimensions()[0], computed ? largest(triplets.rows) : extent);
        EXPECT_EQ(array->get_dimensions()[1], computed ? largest(triplets.columns) : extent);
        EXPECT_GE(array->capacity(), room < 0 ? modelOf(triplets, isLogical).size() : 100U);
    }
}

TEST_F(SparseTriplets, OfZerosStillCountForTheDimensionsAndCancelledOnesAreStored) {
    EXPECT_EQ(build({{}, {}, {}, {}}, -1, -1, 4, qxDOUBLE_CLASS), nullptr);
    const qxArrayOwner zero = build({{7}, {6}, {0}, {}}, -1, -1, -1, qxDOUBLE_CLASS);
    expectStored(zero.get(), {});
    EXPECT_EQ(zero->get_dimensions()[0], 7U);
    EXPECT_EQ(zero->get_dimensions()[1], 6U);
    expectStored(build({{1}, {1}, {1, -1}, {}}, 2, 2, -1, qxDOUBLE_CLASS).get(), {{{0, 0}, 0}});
    expectStored(build({{1, 2, 2}, {1}, {5}, {}}, -1, -1, -1, qxDOUBLE_CLASS).get(), {{{0, 0}, 5}, {{0, 1}, 10}});
    const qxArrayOwner empty =
        takeArray(env, fromTriplets(env, nullptr, nullptr, nullptr, nullptr, 2, 3, 4, qxDOUBLE_CLASS, qxCOMPLEX));
    expectStored(empty.get(), {});
    EXPECT_EQ(empty->capacity(), 4U);
    EXPECT_TRUE(qxIsComplex(empty.get()));
}

TEST_F(SparseTriplets, OfAFullMatrixAreItsNonZeros) {
    jobject full = nested<jdouble>(env, {{0, 1.5, 0}, {2}});
    expectStored(takeArray(env, fromFull(env, full, qxDOUBLE_CLASS)).get(), {{{0, 1}, 2}, {{1, 0}, 1.5}});
    expectStored(takeArray(env, fromFull(env, full, qxLOGICAL_CLASS)).get(), {{{0, 1}, 1}, {{1, 0}, 1}});
}

}  // namespace

}  // namespace nativevrl::test
