#include "arrays/natives.h"
#include "arrays/sparseelementview.h"

#include <algorithm>
#include <map>
#include <random>
#include <tuple>

namespace nativevrl::test::sparseview {

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

TEST(SparseGrowth, FollowsTheStatedStepsAndTheModel) {
    std::uint32_t capacity = 0;
    for (const std::uint32_t expected : {64, 192, 448, 960, 1984, 4032, 8128, 16320, 32704, 65472, 70144, 80192}) {
        EXPECT_EQ(capacity = growCapacity(capacity + 1, capacity, 1000000), expected);
    }
    EXPECT_EQ(growCapacity(65, 64, 100), 100u) << "never beyond a full matrix";
    EXPECT_EQ(growCapacity(4000000000u, 0, 4294967295u), 4037271360u) << "214748416 and 89 steps of 42949696";
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

/// Compares the tables with the model, then what the natives read: all that is stored, and each place of a small array.
void expectHolds(JNIEnv* env, const Held& held, const SparseModel& model, jint rows, jint columns) {
    std::vector<std::uint32_t> starts(static_cast<std::size_t>(columns) + 1);
    std::vector<std::uint32_t> rowIndex;
    std::vector<double> stored[2];
    for (const auto& [place, parts] : model.elements) {
        std::for_each(starts.begin() + place.first + 1, starts.end(), [](std::uint32_t& start) { ++start; });
        rowIndex.push_back(static_cast<std::uint32_t>(place.second));
        stored[0].push_back(parts.first);
        stored[1].push_back(parts.second);
    }
    ASSERT_TRUE(std::equal(starts.begin(), starts.end(), held->columnStartTable()));
    ASSERT_TRUE(std::equal(rowIndex.begin(), rowIndex.end(), held->rowIndexTable()));
    for (const bool real : {true, false}) {
        if (!real && held->imagData() == nullptr) {
            continue;
        }
        ASSERT_EQ(env->PushLocalFrame(400), JNI_OK);
        const auto given = toVector<jdouble>(env, NVKRT(qxGetDoubleData)(env, nullptr, held.handle, real));
        ASSERT_TRUE(std::equal(given.begin(), given.end(), stored[real ? 0 : 1].begin(), stored[real ? 0 : 1].end(),
                               isSame<double>));
        for (jint index = 0; model.limit <= 100 && index < rows * columns; ++index) {
            const auto found = model.elements.find({index / rows, index % rows});
            const double value = found == model.elements.end() ? 0 : real ? found->second.first : found->second.second;
            const jintArray subscripts = intArray(env, {index % rows + 1, index / rows + 1});
            ASSERT_TRUE(isSame(getAt(JavaType<jdouble>{}, env, held.handle, index, real), value)) << index;
            ASSERT_TRUE(isSame(getAt(JavaType<jdouble>{}, env, held.handle, subscripts, real), value)) << index;
            if (qxGetClassID(held.array.get()) == qxDOUBLE_CLASS) {
                const jobject object = getAt(JavaType<jobject>{}, env, held.handle, subscripts, real);
                ASSERT_TRUE(isSame(unboxed<jdouble>(env, object), value)) << index;
            }
        }
        env->PopLocalFrame(nullptr);
    }
}

TEST_F(SparseView, FollowsTheModelThroughRandomEditsAndSharedCopies) {
    const std::tuple<jint, jint, bool, bool, int> cases[] = {
        {1, 1, false, true, 200},     {10, 10, false, true, 1500}, {10, 10, true, false, 1500},
        {40, 30, false, false, 6000}, {7, 100, false, true, 4000}, {100000, 3, true, false, 1500}};
    for (const auto& [rows, columns, logical, complex, edits] : cases) {
        const unsigned seed = std::random_device{}();
        SCOPED_TRACE(testing::Message() << rows << " by " << columns << ", seed " << seed);
        std::mt19937 random(seed);
        qxArray* made = logical ? qxCreateSparseLogicalMatrix(rows, columns, 0)
                                : qxCreateSparse(rows, columns, 0, complex ? qxCOMPLEX : qxREAL);
        const Held first(env, made);
        const Held second(env, qxCreateSharedDataCopy(made));
        SparseModel model{std::uint64_t(rows) * std::uint64_t(columns), 0, {}};
        for (int edit = 0; edit < edits; ++edit) {
            const jint row = static_cast<jint>(random() % static_cast<unsigned>(rows));
            const jint column = static_cast<jint>(random() % static_cast<unsigned>(columns));
            // Phases of mostly inserting and mostly removing drive the capacity up and down.
            const bool removing = random() % 100 < (edit / 500 % 2 == 0 ? 25u : 85u);
            const double values[] = {1, -2.5, std::nan(""), 1e300, 4};
            double value = removing ? (random() % 2 == 0 ? 0.0 : -0.0) : values[random() % 5];
            const bool real = !complex || random() % 2 == 0;
            const jobject handle = random() % 2 == 0 ? first.handle : second.handle;
            if (logical) {
                value = value == 0 ? 0 : 1;
            }
            if (random() % 2 == 0) {
                const jintArray subscripts = intArray(env, {row + 1, column + 1});
                setAt(env, handle, subscripts, value, real);
                env->DeleteLocalRef(subscripts);
            } else {
                setAt(env, handle, static_cast<jint>(row + column * rows), value, real);
            }
            model.set(row, column, value, real);
            ASSERT_EQ(first->capacity(), model.capacity) << "edit " << edit;
            ASSERT_EQ(second->rowIndexTable(), first->rowIndexTable());
            if (edit % 50 == 0 || edit + 1 == edits) {
                SCOPED_TRACE(testing::Message() << "edit " << edit);
                ASSERT_NO_FATAL_FAILURE(expectHolds(env, first, model, rows, columns));
                ASSERT_NO_FATAL_FAILURE(expectHolds(env, second, model, rows, columns));
            }
        }
        expectNoThrow(env);
    }
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
        EXPECT_EQ(toVector<jdouble>(env, NVKRT(qxGetData)(env, nullptr, held.handle, JNI_TRUE)),
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

TEST_F(SparseView, EndsAnArrayThatItOwns) { SparseArrayView(qxCreateSparse(3, 3, 0, qxREAL), true); }

}  // namespace nativevrl::test::sparseview
