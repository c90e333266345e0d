#include "randomarray.h"
#include "support.h"
#include "support/heapblocks.h"

#include <functional>
#include <new>

namespace {

using loomkit::test::Refusal;
using loomkit::test::refuseEachBlock;

constexpr Refusal kRefusals[] = {Refusal::once, Refusal::fromThereOn};
constexpr const char* kName = "\xF0\x9D\x92\x9C and more bytes than a short string has";
constexpr const char* kModifiedName = "\xED\xA0\xB5\xED\xB2\x9C and more bytes than a short string has";
constexpr std::uint32_t kExtents[] = {1, 2, 1, 2, 1};

class MemorySweep : public QxTest {
protected:
    MemorySweep() {
        qxArrayOwner record(qxCreateStructArray(5, kExtents, 1, names_));
        qxSetCell(record.get(), 0, qxCreateFunctionHandle("solve"));
        qxSetCell(record.get(), 1, qxCreateSharedDataCopy(numbers_.get()));
        nested_ = nestedCells(2, std::move(record));
        realOf<double>(numbers_)[2] = 1;
        sparse_.reset(qxMustBeSparse(numbers_.get()));
        form_ = formOf(nested_.get());
        liveBefore_ = qxLiveArrayCount();
    }
    void SetUp() override {}

    const char* names_[1] = {kName};
    qxArrayOwner numbers_{qxCreateDoubleMatrix(3, 2, qxCOMPLEX)};
    qxArrayOwner sparse_;
    qxArrayOwner nested_;
    std::vector<unsigned char> form_;
};

TEST_F(MemorySweep, MakesAnArrayWholeOrNotAtAll) {
    struct Maker {
        const char* what;
        std::function<qxArray*()> make;
    };
    const auto noEnd = [](void*) {};
    const Maker makers[] = {
        {"numbers", [] { return qxCreateNumericArray(5, kExtents, qxSINGLE_CLASS, qxCOMPLEX); }},
        {"unset numbers", [] { return qxCreateUninitNumericArray(0, nullptr, qxINT8_CLASS, qxCOMPLEX); }},
        {"large matrix", [] { return qxCreateDoubleMatrix(1000, 700, qxCOMPLEX); }},
        {"scalar", [] { return qxCreateDoubleScalar(2); }},
        {"truth", [] { return qxCreateLogicalScalar(true); }},
        {"text", [] { return qxCreateString(kName); }},
        {"cell", [] { return qxCreateCellArray(5, kExtents); }},
        {"struct", [&] { return qxCreateStructArray(5, kExtents, 1, names_); }},
        {"sparse", [] { return qxCreateSparse(3, 3, 4, qxCOMPLEX); }},
        {"sparse truths", [] { return qxCreateSparseLogicalMatrix(3, 3, 4); }},
        {"function handle", [] { return qxCreateFunctionHandle(kName); }},
        {"opaque", [&] { return qxCreateOpaque(kName, nullptr, noEnd); }},
        {"shared copy", [&] { return qxCreateSharedDataCopy(nested_.get()); }},
        {"copy", [&] { return qxDuplicateArray(nested_.get()); }},
        {"copy of sparse", [&] { return qxDuplicateArray(sparse_.get()); }},
        {"conversion", [&] { return qxCreateConvertedCopy(numbers_.get(), qxINT8_CLASS); }},
        {"sparse conversion", [&] { return qxCreateConvertedCopy(sparse_.get(), qxLOGICAL_CLASS); }},
        {"full conversion", [&] { return qxCreateConvertedCopy(sparse_.get(), qxSINGLE_CLASS); }},
        {"made sparse", [&] { return qxMustBeSparse(numbers_.get()); }},
        {"form", [&] { return qxSerialize(nested_.get()); }},
        {"form of sparse", [&] { return qxSerialize(sparse_.get()); }},
        {"reading", [&] { return qxDeserialize(form_.data(), form_.size()); }},
    };
    for (const Maker& maker : makers) {
        const qxArrayOwner expected(maker.make());
        ASSERT_TRUE(expected) << maker.what;
        const std::size_t live = qxLiveArrayCount();
        for (const Refusal refusal : kRefusals) {
            qxArrayOwner made;
            const auto check = [&](std::size_t number) {
                EXPECT_TRUE(made ? areSame(made.get(), expected.get()) : number != 0) << maker.what << " " << number;
                made.reset();
                EXPECT_EQ(qxLiveArrayCount(), live) << maker.what << " " << number;
            };
            EXPECT_GT(refuseEachBlock(
                          refusal, [&] { made.reset(maker.make()); }, check),
                      0U)
                << maker.what;
        }
        EXPECT_EQ(formOf(nested_.get()), form_) << maker.what;
    }
}

TEST_F(MemorySweep, ChangesAnArrayWhollyOrNotAtAll) {
    for (const Refusal refusal : kRefusals) {
        qxArrayOwner record(qxCreateStructMatrix(1, 2, 1, names_));
        qxSetCell(record.get(), 1, qxCreateDoubleScalar(3));
        const auto before = formOf(record.get());
        int added = 0;
        EXPECT_GT(refuseEachBlock(
                      refusal, [&] { added = qxAddField(record.get(), "second"); },
                      [&](std::size_t number) {
                          EXPECT_EQ(added, number != 0 ? -1 : 1);
                          EXPECT_EQ(formOf(record.get()) == before, number != 0);
                          EXPECT_EQ(*static_cast<double*>(qxGetField(record.get(), 1, kName)->realData()), 3);
                      }),
                  0U);

        const qxArrayOwner cell(qxCreateCellMatrix(1, 2));
        qxArrayOwner holder = nestedCells(1, qxArrayOwner(qxCreateSharedDataCopy(cell.get())));
        EXPECT_GT(refuseEachBlock(
                      refusal, [&] { qxSetCell(cell.get(), 1, holder.release()); },
                      [&](std::size_t number) {
                          qxArrayOwner stored(qxGetCell(cell.get(), 1));
                          EXPECT_EQ(stored == nullptr, number != 0) << number;
                          EXPECT_FALSE(qxSharesStorage(stored.get(), cell.get()));
                          stored.reset();
                          qxSetCell(cell.get(), 1, nullptr);
                          holder = nestedCells(1, qxArrayOwner(qxCreateSharedDataCopy(cell.get())));
                      }),
                  0U);
    }
}

TEST_F(MemorySweep, FindsAFieldWithoutMemory) {
    const loomkit::test::HeapWatch nothingLeft(1, Refusal::fromThereOn);
    EXPECT_EQ(qxGetFieldNumber(nested_.get(), kModifiedName), -1);
    const qxArray* record = qxGetCell(qxGetCell(nested_.get(), 0), 0);
    EXPECT_EQ(qxGetFieldNumber(record, kModifiedName), 0);
    EXPECT_NE(qxGetField(record, 1, kName), nullptr);
}

TEST_F(MemorySweep, GivesTextWholeOrSaysWhatIsMissing) {
    const std::string expected = qxToText(nested_.get());
    for (const Refusal refusal : kRefusals) {
        std::string text;
        EXPECT_GT(refuseEachBlock(
                      refusal, [&] { text = qxToText(nested_.get()); },
                      [&](std::size_t number) { EXPECT_TRUE(text == expected || (number != 0 && text.empty())); }),
                  0U);
        const qxArrayOwner handle(qxCreateFunctionHandle(kName));
        bool failed = false;
        const auto readName = [&] {
            failed = false;
            try {
                text = qxGetFunctionName(handle.get());
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        };
        EXPECT_GT(
            refuseEachBlock(refusal, readName,
                            [&](std::size_t number) { EXPECT_TRUE(failed ? number != 0 : text == kName) << number; }),
            0U);
    }
}

}  // namespace
