#include "randomarray.h"
#include "support.h"

#include <thread>

namespace {

using Copies = RandomQxTest;

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

    const qxArrayOwner record = structOf(1, 2, {"a"});
    const qxArrayOwner other(qxCreateSharedDataCopy(record.get()));
    qxSetCell(record.get(), 1, qxCreateDoubleScalar(5));
    EXPECT_EQ(qxAddField(record.get(), "b"), 1);
    EXPECT_EQ(other->get_number_of_struct_fields(), 2U);
    EXPECT_EQ(qxGetField(other.get(), 1, "a"), qxGetCell(record.get(), 2));
}

TEST_F(Copies, ThatAreDeepAreEqualAndApart) {
    forRounds(500, [&] {
        qxArrayOwner source = randomArray(random_, 4);
        const qxArrayOwner copy(qxDuplicateArray(source.get()));
        ASSERT_TRUE(areSame(source.get(), copy.get()));
        ASSERT_FALSE(qxSharesStorage(source.get(), copy.get()));
        ASSERT_EQ(copy->capacity(), source->capacity());
        const auto form = formOf(source.get());
        source.reset();
        ASSERT_EQ(formOf(copy.get()), form);
    });
}

TEST_F(Copies, ThatAreDeepStayAsSmallAsTheirSource) {
    // Each level holds the one below twice: unfolded it would be 2^60 arrays.
    qxArrayOwner level(qxCreateDoubleScalar(1));
    for (int depth = 0; depth < 60; ++depth) {
        qxArrayOwner outer = cellOf(1, 2, {qxCreateSharedDataCopy(level.get()), level.release()});
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

TEST_F(Copies, OfAnOpaqueValueEndThePayloadOnceOnSeveralThreads) {
    int ended = 0;
    const auto end = [](void* payload) { ++*static_cast<int*>(payload); };
    qxArrayOwner source(qxCreateOpaque("Handle", &ended, end));
    EXPECT_EQ(source->classWord(), 17U);
    qxArrayOwner cell = cellOf(1, 1, {qxDuplicateArray(source.get())});
    qxArrayOwner cellCopy(qxDuplicateArray(cell.get()));
    EXPECT_EQ(qxGetOpaquePayload(qxGetCell(cellCopy.get(), 0)), &ended);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&source] {
            for (int round = 0; round < 5000; ++round) {
                const qxArrayOwner copy(qxCreateSharedDataCopy(source.get()));
                EXPECT_STREQ(qxGetSubclass(copy.get()), "Handle");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    source.reset();
    cell.reset();
    EXPECT_EQ(ended, 0);
    cellCopy.reset();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(qxGetSubclass(rowOf({1}).get()), nullptr);
    EXPECT_EQ(qxGetOpaquePayload(rowOf({1}).get()), nullptr);
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
