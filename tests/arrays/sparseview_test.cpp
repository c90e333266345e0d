#include "arrays/natives.h"
#include "arrays/sparseelementview.h"

#include <map>
#include <random>

namespace nativevrl::test {

namespace {

using SparseView = JvmTest;

/// The growth rule counted out step by step.
std::uint64_t modelGrowth(std::uint64_t needed, std::uint64_t current, std::uint64_t limit) {
    const auto nextBlock = [](std::uint64_t value) {
        do {
            ++value;
        } while (value % 64 != 0);
        return value;
    };
    const auto roundUp = [&](std::uint64_t value) { return value != 0 && value % 64 == 0 ? value : nextBlock(value); };
    const std::uint64_t doublingEnd = roundUp(limit * 5 / 100);
    while (current < needed && current < doublingEnd) {
        current = roundUp(2 * current + 1);
    }
    if (current < needed) {
        for (current = doublingEnd; current < needed; current += roundUp(limit / 100)) {
        }
    }
    return std::min(current, limit);
}

TEST(SparseGrowth, FollowsTheStatedSteps) {
    const std::vector<std::uint32_t> square1000 = {64,   192,   448,   960,   1984,  4032,
                                                   8128, 16320, 32704, 65472, 70144, 80192};
    std::uint32_t capacity = 0;
    for (const std::uint32_t expected : square1000) {
        capacity = growCapacity(capacity + 1, capacity, 1000000);
        EXPECT_EQ(capacity, expected);
    }
    EXPECT_EQ(growCapacity(1, 0, 100), 64u);
    EXPECT_EQ(growCapacity(65, 64, 100), 100u) << "never beyond a full matrix";
    EXPECT_EQ(growCapacity(3, 5, 4), 4u);
    EXPECT_EQ(growCapacity(1, 0, 1), 1u);
    EXPECT_EQ(growCapacity(4000000000u, 0, 4294967295u), 4037271360u) << "214748416 and 89 steps of 42949696";
}

TEST(SparseGrowth, MatchesTheModel) {
    std::mt19937 random(20);
    for (int i = 0; i < 20000; ++i) {
        const std::uint32_t limit = random() >> (random() % 32);
        const std::uint32_t needed = limit == 0 ? 0 : random() % limit + 1;
        const std::uint32_t current = random() % (std::uint64_t{needed} + 3);
        ASSERT_EQ(growCapacity(needed, current, limit), modelGrowth(needed, current, limit))
            << needed << " from " << current << " of " << limit;
    }
}

/// A sparse array as a map from column and row to both parts, and the capacity that its edits must have led to.
struct SparseModel {
    std::uint64_t limit;
    std::uint64_t capacity = 0;
    std::map<std::pair<jint, jint>, std::pair<double, double>> elements;

    void set(jint row, jint column, double value, bool real) {
        const auto key = std::pair(column, row);
        const auto found = elements.find(key);
        const auto before = found == elements.end() ? std::pair(0.0, 0.0) : found->second;
        auto after = before;
        (real ? after.first : after.second) = value;
        const double other = real ? before.second : before.first;
        if (value == 0 && other == 0) {
            if (found != elements.end()) {
                elements.erase(found);
                capacity = 2 * capacity < 3 * elements.size() ? capacity : elements.size();
            }
            return;
        }
        if (found == elements.end() && elements.size() == capacity) {
            capacity = modelGrowth(elements.size() + 1, capacity, limit);
        }
        elements[key] = after;
    }
};

testing::AssertionResult holds(const qxArray* array, const SparseModel& model, jint columns) {
    if (array->capacity() != model.capacity) {
        return testing::AssertionFailure() << "capacity " << array->capacity() << ", model " << model.capacity;
    }
    std::uint32_t position = 0;
    auto element = model.elements.begin();
    for (jint column = 0; column < columns; ++column) {
        if (array->columnStartTable()[column] != position) {
            return testing::AssertionFailure()
                   << "column " << column << " starts at " << array->columnStartTable()[column];
        }
        for (; element != model.elements.end() && element->first.first == column; ++element, ++position) {
            const double real = qxGetClassID(array) == qxLOGICAL_CLASS
                                    ? static_cast<std::uint8_t*>(array->realData())[position]
                                    : static_cast<double*>(array->realData())[position];
            const double imag = array->imagData() == nullptr ? 0 : static_cast<double*>(array->imagData())[position];
            if (array->rowIndexTable()[position] != static_cast<std::uint32_t>(element->first.second) ||
                !isSame(real, element->second.first) || !isSame(imag, element->second.second)) {
                return testing::AssertionFailure() << "position " << position << " of column " << column << ": " << real
                                                   << ", " << imag << " at row " << array->rowIndexTable()[position];
            }
        }
    }
    return array->columnStartTable()[columns] == position
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "ends at " << array->columnStartTable()[columns];
}

struct EditCase {
    jint rows;
    jint columns;
    bool logical;
    bool complex;
    int edits;
};

TEST_F(SparseView, FollowsTheModelThroughRandomEditsAndSharedCopies) {
    const EditCase cases[] = {{1, 1, false, true, 200},    {10, 10, false, true, 1500},
                              {10, 10, true, false, 1500}, {40, 30, false, false, 6000},
                              {7, 100, false, true, 4000}, {100000, 3, true, false, 1500}};
    for (const EditCase& one : cases) {
        const unsigned seed = std::random_device{}();
        SCOPED_TRACE(testing::Message() << one.rows << " by " << one.columns << ", seed " << seed);
        std::mt19937 random(seed);
        qxArray* made = one.logical ? qxCreateSparseLogicalMatrix(one.rows, one.columns, 0)
                                    : qxCreateSparse(one.rows, one.columns, 0, one.complex ? qxCOMPLEX : qxREAL);
        const Held first(env, made);
        const Held second(env, qxCreateSharedDataCopy(made));
        SparseModel model{std::uint64_t(one.rows) * std::uint64_t(one.columns), 0, {}};
        for (int edit = 0; edit < one.edits; ++edit) {
            const jint row = static_cast<jint>(random() % static_cast<unsigned>(one.rows));
            const jint column = static_cast<jint>(random() % static_cast<unsigned>(one.columns));
            // Phases of mostly inserting and mostly removing drive the capacity up and down.
            const bool removing = random() % 100 < (edit / 500 % 2 == 0 ? 25u : 85u);
            const double values[] = {1, -2.5, std::nan(""), 1e300, 4};
            double value = removing ? (random() % 2 == 0 ? 0.0 : -0.0) : values[random() % 5];
            const bool real = !one.complex || random() % 2 == 0;
            const jobject handle = random() % 2 == 0 ? first.handle : second.handle;
            if (one.logical) {
                value = value == 0 ? 0 : 1;
            }
            if (random() % 2 == 0) {
                const jintArray subscripts = intArray(env, {row + 1, column + 1});
                setAt(env, handle, subscripts, value, real);
                env->DeleteLocalRef(subscripts);
            } else {
                setAt(env, handle, static_cast<jint>(row + column * one.rows), value, real);
            }
            model.set(row, column, value, real);
            ASSERT_EQ(first->capacity(), model.capacity) << "edit " << edit;
            ASSERT_EQ(second->rowIndexTable(), first->rowIndexTable());
            if (edit % 50 == 0 || edit + 1 == one.edits) {
                ASSERT_TRUE(holds(first.array.get(), model, one.columns)) << "edit " << edit;
                ASSERT_TRUE(holds(second.array.get(), model, one.columns)) << "edit " << edit;
            }
        }
        expectNoThrow(env);
    }
}

TEST_F(SparseView, KeepsNoZerosButNaN) {
    const Held held(env, qxCreateSparse(3, 3, 0, qxCOMPLEX));
    const auto stored = [&] { return SparseArrayView(held.array.get()).count(); };
    setAt(env, held.handle, jint{4}, jdouble{0}, true);
    EXPECT_EQ(stored(), 0u) << "zero where nothing is stored";
    setAt(env, held.handle, jint{4}, std::nan(""), true);
    setAt(env, held.handle, jint{4}, jdouble{2}, false);
    setAt(env, held.handle, jint{4}, jdouble{0}, true);
    EXPECT_EQ(stored(), 1u) << "the other part is not zero";
    setAt(env, held.handle, jint{4}, jdouble{-0.0}, false);
    EXPECT_EQ(stored(), 0u);
    EXPECT_EQ(held->capacity(), 0u);
}

TEST_F(SparseView, AnswersWhatIsStored) {
    const Held held(env, qxCreateSparse(3, 3, 0, qxREAL));
    SparseElementView<double> view(held.array.get());
    EXPECT_TRUE(view.setElement(SparsePosition{1, 2}, 5, true));
    view.attach(held.array.get());
    EXPECT_EQ(view.count(), 1u) << "attaching once more changes nothing";
    EXPECT_EQ(held->capacity(), 0u) << "not before the flush";
    EXPECT_EQ(*static_cast<double*>(view.findElement({1, 2}, true)), 5);
    EXPECT_EQ(view.findElement({1, 2}, false), nullptr) << "no such part";
    EXPECT_EQ(view.findElement({0, 2}, true), nullptr);
    EXPECT_TRUE(view.findRangeByIndex(7).isStored());
    EXPECT_TRUE(view.setElement(std::size_t{7}, 6, false)) << "makes the array complex";
    EXPECT_TRUE(view.setElement(std::size_t{0}, 9, false));
    view.flush();
    EXPECT_TRUE(qxIsComplex(held.array.get()));
    EXPECT_EQ(held->capacity(), 9u);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{7}, false), 6);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{7}, true), 5);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{0}, false), 9);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{0}, true), 0);
    EXPECT_TRUE(view.erase(std::size_t{7}));
    EXPECT_TRUE(view.erase(std::size_t{7})) << "nothing to remove is no failure";
    EXPECT_EQ(view.count(), 1u);
}

TEST_F(SparseView, WritesBackWhatMovedWhenAnExceptionPasses) {
    const Held held(env, qxCreateSparse(100, 1, 0, qxREAL));
    EXPECT_THROW(
        {
            SparseElementView<double> view(held.array.get());
            for (std::size_t index = 0; index < 70; ++index) {
                view.setElement(index, 1 + double(index), true);
            }
            throw std::runtime_error("in the middle");
        },
        std::runtime_error);
    EXPECT_EQ(held->capacity(), 100u);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{69}, true), 70);
}

TEST_F(SparseView, LeavesTablesAloneThatHoldAPositionTwice) {
    // As many elements as a full matrix has, and yet a position that is not stored; with capacity to spare or without.
    for (const std::uint32_t stored : {4u, 6u}) {
        const Held held(env, qxCreateSparse(2, 2, stored, qxREAL));
        std::fill_n(held->rowIndexTable(), stored, 0u);
        std::fill_n(static_cast<double*>(held->realData()), stored, 1.0);
        held->columnStartTable()[1] = 2;
        held->columnStartTable()[2] = stored;
        setAt(env, held.handle, jint{1}, jdouble{5}, true);
        expectNoThrow(env);
        EXPECT_EQ(held->capacity(), stored);
        EXPECT_EQ(held->columnStartTable()[2], stored);
        EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{1}, true), 0);
        EXPECT_EQ(toVector<jdouble>(env, Java_com_norvane_toolbox_loomkit_internal_NVKRT_qxGetData(
                                             env, nullptr, held.handle, JNI_TRUE)),
                  std::vector<jdouble>(stored, 1.0));
    }
}

TEST_F(SparseView, MovesAnImaginaryPartThatCameThroughAnotherHeader) {
    const Held real(env, qxCreateSparse(4, 1, 2, qxREAL));
    const Held complex(env, qxCreateSharedDataCopy(real.array.get()));
    setAt(env, real.handle, jint{2}, jdouble{1}, true);
    qxSetImagData(complex.array.get(), qxCalloc(2, sizeof(double)));
    setAt(env, complex.handle, jint{2}, jdouble{5}, false);
    for (const jint index : {0, 3, 1}) {
        setAt(env, real.handle, index, jdouble{7}, true);
    }
    for (const jint index : {0, 1, 2, 3}) {
        EXPECT_EQ(getAt(JavaType<jdouble>{}, env, complex.handle, index, false), index == 2 ? 5 : 0) << index;
    }
    EXPECT_EQ(real->capacity(), 4u);
    EXPECT_FALSE(qxIsComplex(real.array.get())) << "the array that was written through stays real";
    EXPECT_FALSE(real->hasComplexFlag());
    EXPECT_EQ(real->imagData(), complex->imagData());
    setAt(env, real.handle, jint{2}, jdouble{0}, true);
    EXPECT_EQ(SparseArrayView(real.array.get()).count(), 3u) << "a real array knows no other part that is not zero";
}

TEST_F(SparseView, EndsAnArrayThatItOwns) {
    const std::size_t before = qxLiveArrayCount();
    {
        const SparseArrayView view(qxCreateSparse(3, 3, 0, qxREAL), true);
        EXPECT_EQ(qxLiveArrayCount(), before + 1);
    }
    EXPECT_EQ(qxLiveArrayCount(), before);
}

}  // namespace

}  // namespace nativevrl::test
