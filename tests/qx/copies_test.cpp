#include "randomarray.h"
#include "support.h"

#include <thread>

namespace {

using Copies = QxTest;

TEST_F(Copies, ThatShareDataSeeEachOthersChanges) {
    const qxArrayOwner first = rowOf({1, 2, 3});
    const qxArrayOwner second(qxCreateSharedDataCopy(first.get()));
    ASSERT_TRUE(qxSharesStorage(first.get(), second.get()));
    realOf<double>(first)[1] = 20;
    void* moved = qxRealloc(first->realData(), 100000);
    qxSetData(first.get(), moved);
    EXPECT_EQ(second->realData(), moved);
    EXPECT_EQ(realOf<double>(second)[1], 20);

    // The complex flag is each header's own.
    qxSetImagData(first.get(), qxCalloc(3, sizeof(double)));
    EXPECT_TRUE(qxIsComplex(first.get()));
    EXPECT_FALSE(qxIsComplex(second.get()));
    EXPECT_EQ(second->imagData(), first->imagData());
    qxFree(first->imagData());
    qxSetImagData(first.get(), nullptr);
    EXPECT_FALSE(first->hasComplexFlag());

    const qxArrayOwner sparse(qxCreateSparse(5, 5, 1, qxREAL));
    const qxArrayOwner shared(qxCreateSharedDataCopy(sparse.get()));
    qxSetIr(sparse.get(), static_cast<std::uint32_t*>(qxRealloc(sparse->rowIndexTable(), 256)));
    qxSetJc(sparse.get(), static_cast<std::uint32_t*>(qxRealloc(sparse->columnStartTable(), 256)));
    qxSetNzmax(sparse.get(), 64);
    EXPECT_EQ(shared->rowIndexTable(), sparse->rowIndexTable());
    EXPECT_EQ(shared->columnStartTable(), sparse->columnStartTable());
    EXPECT_EQ(shared->capacity(), 64U);

    const char* names[] = {"a"};
    const qxArrayOwner record(qxCreateStructMatrix(1, 2, 1, names));
    const qxArrayOwner other(qxCreateSharedDataCopy(record.get()));
    qxSetCell(record.get(), 1, qxCreateDoubleScalar(5));
    EXPECT_EQ(qxAddField(record.get(), "b"), 1);
    EXPECT_EQ(other->get_number_of_struct_fields(), 2U);
    EXPECT_EQ(qxGetField(other.get(), 1, "a"), qxGetCell(record.get(), 2));
}

TEST_F(Copies, ThatAreDeepAreEqualAndApart) {
    const std::uint64_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    for (int round = 0; round < 500; ++round) {
        qxArrayOwner source = randomArray(random, 4);
        const qxArrayOwner copy(qxDuplicateArray(source.get()));
        ASSERT_TRUE(areSame(source.get(), copy.get())) << "round " << round;
        ASSERT_FALSE(qxSharesStorage(source.get(), copy.get()));
        ASSERT_EQ(copy->capacity(), source->capacity());
        const auto form = formOf(source.get());
        source.reset();
        ASSERT_EQ(formOf(copy.get()), form) << "round " << round;
    }
}

TEST_F(Copies, ThatAreDeepStayAsSmallAsTheirSource) {
    // Each level holds the one below twice: unfolded it would be 2^60 arrays.
    qxArrayOwner level(qxCreateDoubleScalar(1));
    for (int depth = 0; depth < 60; ++depth) {
        qxArrayOwner outer(qxCreateCellMatrix(1, 2));
        qxSetCell(outer.get(), 0, qxCreateSharedDataCopy(level.get()));
        qxSetCell(outer.get(), 1, level.release());
        level = std::move(outer);
    }
    const std::size_t before = qxLiveArrayCount();
    const qxArrayOwner copy(qxDuplicateArray(level.get()));
    EXPECT_EQ(qxLiveArrayCount() - before, before - liveBefore_);
    const qxArray* pair = qxGetCell(copy.get(), 0);
    EXPECT_TRUE(qxSharesStorage(pair, qxGetCell(copy.get(), 1)));
    EXPECT_FALSE(qxSharesStorage(pair, qxGetCell(level.get(), 0)));
    EXPECT_FALSE(qxSerialize(level.get()));
    EXPECT_LT(qxToText(level.get()).size(), 1000000U);
}

TEST_F(Copies, MayBeMadeAndEndedOnSeveralThreads) {
    int ended = 0;
    {
        const qxArrayOwner source(
            qxCreateOpaque("Handle", &ended, [](void* payload) { ++*static_cast<int*>(payload); }));
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&source] {
                for (int round = 0; round < 5000; ++round) {
                    const qxArrayOwner copy(qxCreateSharedDataCopy(source.get()));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1);
}

TEST_F(Copies, OfNothingAreNothing) {
    EXPECT_FALSE(qxCreateSharedDataCopy(nullptr));
    EXPECT_FALSE(qxDuplicateArray(nullptr));
    EXPECT_FALSE(qxCreateConvertedCopy(nullptr, qxDOUBLE_CLASS));
    EXPECT_FALSE(qxMustBeSparse(nullptr));
    EXPECT_FALSE(qxSharesStorage(nullptr, nullptr));
    qxDestroyArray(nullptr);
    qxFree(nullptr);
}

}  // namespace
