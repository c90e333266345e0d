#include "support.h"

namespace {

using Slots = QxTest;

double numberIn(const qxArray* array) { return *static_cast<const double*>(array->realData()); }

TEST_F(Slots, HoldWhatIsStored) {
    const qxArrayOwner cell(qxCreateCellMatrix(1, 2));
    EXPECT_EQ(qxGetCell(cell.get(), 0), nullptr);
    qxSetCell(cell.get(), 1, qxCreateDoubleScalar(1));
    qxDestroyArray(qxGetCell(cell.get(), 1));
    qxSetCell(cell.get(), 1, qxCreateDoubleScalar(2));
    EXPECT_EQ(numberIn(qxGetCell(cell.get(), 1)), 2);
    qxArray* old = qxGetCell(cell.get(), 1);
    qxSetCell(cell.get(), 1, nullptr);
    EXPECT_EQ(numberIn(old), 2);
    qxDestroyArray(old);
    EXPECT_EQ(qxGetElementSize(cell.get()), sizeof(void*));
}

TEST_F(Slots, ThatAreNotThereEndWhatIsGivenToThem) {
    const qxArrayOwner cell = cellOf(1, 2, {nullptr, nullptr, qxCreateDoubleScalar(1)});
    EXPECT_EQ(qxGetCell(cell.get(), 2), nullptr);
    const qxArrayOwner number = rowOf({1});
    qxSetCell(number.get(), 0, qxCreateDoubleScalar(1));
    EXPECT_EQ(qxGetCell(number.get(), 0), nullptr);
    EXPECT_EQ(numberIn(number.get()), 1);
}

TEST_F(Slots, NeverHoldTheArrayThatTheyBelongTo) {
    qxArrayOwner inner(qxCreateCellMatrix(1, 2));
    const qxArrayOwner outer(qxCreateCellMatrix(1, 1));
    qxSetCell(inner.get(), 0, qxCreateDoubleScalar(3));
    qxSetCell(outer.get(), 0, qxCreateSharedDataCopy(inner.get()));
    qxSetCell(inner.get(), 1, qxCreateSharedDataCopy(outer.get()));
    const qxArray* stored = qxGetCell(inner.get(), 1);
    EXPECT_FALSE(qxSharesStorage(stored, outer.get()));
    EXPECT_EQ(numberIn(qxGetCell(qxGetCell(stored, 0), 0)), 3);
    EXPECT_EQ(qxGetCell(qxGetCell(stored, 0), 1), nullptr);

    const qxArrayOwner self(qxCreateCellMatrix(1, 1));
    qxSetCell(self.get(), 0, qxCreateSharedDataCopy(self.get()));
    EXPECT_FALSE(qxSharesStorage(qxGetCell(self.get(), 0), self.get()));
    EXPECT_EQ(formOf(self.get()).size(), 15U);
}

TEST_F(Slots, AreReplacedWhileTheOldElementIsWhole) {
    const qxArrayOwner cell(qxCreateCellMatrix(1, 1));
    qxSetCell(cell.get(), 0, qxCreateDoubleScalar(3));
    qxArray* replaced = nullptr;
    EXPECT_TRUE(qxReplaceCell(cell.get(), 0, qxCreateSharedDataCopy(cell.get()), &replaced));
    const qxArrayOwner three(replaced);
    EXPECT_EQ(numberIn(three.get()), 3);
    EXPECT_FALSE(qxSharesStorage(qxGetCell(cell.get(), 0), cell.get()));
    EXPECT_EQ(numberIn(qxGetCell(qxGetCell(cell.get(), 0), 0)), 3);
    EXPECT_TRUE(qxReplaceCell(cell.get(), 1, qxCreateDoubleScalar(1), &replaced));
    EXPECT_EQ(replaced, nullptr);

    // Each copy keeps its capacity: so many tables of 2^32 elements fit no address space.
    const qxArrayOwner huge(qxCreateCellMatrix(1, 8000));
    for (std::size_t slot = 0; slot < 8000; ++slot) {
        qxSetCell(huge.get(), slot, qxCreateSparse(1, 1, 0, qxREAL));
        qxSetNzmax(qxGetCell(huge.get(), slot), 0xFFFFFFFF);
    }
    const qxArray* first = qxGetCell(huge.get(), 0);
    EXPECT_FALSE(qxReplaceCell(huge.get(), 0, qxCreateSharedDataCopy(huge.get()), &replaced));
    EXPECT_EQ(replaced, nullptr);
    EXPECT_EQ(qxGetCell(huge.get(), 0), first);
}

TEST_F(Slots, OfAStructLieFieldByField) {
    const qxArrayOwner array = structOf(1, 2, {"a", "b"});
    for (std::size_t slot = 0; slot < 4; ++slot) {
        qxSetCell(array.get(), slot, qxCreateDoubleScalar(static_cast<double>(slot)));
    }
    EXPECT_EQ(numberIn(qxGetField(array.get(), 0, "b")), 1);
    EXPECT_EQ(numberIn(qxGetField(array.get(), 1, "a")), 2);
    EXPECT_EQ(qxGetField(array.get(), 2, "a"), nullptr);
    EXPECT_EQ(qxGetField(array.get(), 0, "c"), nullptr);

    EXPECT_EQ(qxAddField(array.get(), "c"), 2);
    EXPECT_EQ(qxAddField(array.get(), "b"), 1);
    EXPECT_EQ(array->get_number_of_struct_fields(), 3U);
    EXPECT_STREQ(array->get_struct_field_name_by_number(2), "c");
    EXPECT_EQ(array->get_struct_field_name_by_number(3), nullptr);
    EXPECT_EQ(numberIn(qxGetField(array.get(), 0, "b")), 1);
    EXPECT_EQ(numberIn(qxGetField(array.get(), 1, "a")), 2);
    EXPECT_EQ(qxGetField(array.get(), 1, "c"), nullptr);
    qxSetCell(array.get(), 5, qxCreateDoubleScalar(7));
    EXPECT_EQ(numberIn(qxGetField(array.get(), 1, "c")), 7);
}

TEST_F(Slots, AreNoDataInAStructWithElementsAndNoFields) {
    const qxArrayOwner array(qxCreateStructMatrix(1, 2, 0, nullptr));
    ASSERT_TRUE(array);
    EXPECT_EQ(array->realData(), nullptr);
    EXPECT_EQ(qxArrayOwner(qxDuplicateArray(array.get()))->realData(), nullptr);
    EXPECT_EQ(arrayOf(formOf(array.get()))->realData(), nullptr);
    EXPECT_NE(qxArrayOwner(qxCreateStructMatrix(0, 2, 0, nullptr))->realData(), nullptr);
    EXPECT_EQ(qxAddField(array.get(), "a"), 0);
    qxSetCell(array.get(), 1, qxCreateDoubleScalar(7));
    EXPECT_EQ(numberIn(qxGetField(array.get(), 1, "a")), 7);
}

TEST_F(Slots, OfAStructTakeOnlyProperNames) {
    const char* twice[] = {"a", "a"};
    const char* missing[] = {"a", nullptr};
    const char* blank[] = {""};
    EXPECT_FALSE(qxCreateStructMatrix(1, 1, 2, twice));
    EXPECT_FALSE(qxCreateStructMatrix(1, 1, 2, missing));
    EXPECT_FALSE(qxCreateStructMatrix(1, 1, 1, blank));
    EXPECT_FALSE(qxCreateStructMatrix(1, 1, 1, nullptr));
    const qxArrayOwner array(qxCreateStructMatrix(0, 0, 0, nullptr));
    ASSERT_TRUE(array);
    EXPECT_EQ(qxAddField(array.get(), ""), -1);
    EXPECT_EQ(qxAddField(array.get(), nullptr), -1);
    EXPECT_EQ(qxAddField(rowOf({1}).get(), "a"), -1);
    EXPECT_EQ(qxGetFieldNumber(array.get(), "a"), -1);
    EXPECT_EQ(qxGetFieldNumber(rowOf({1}).get(), "a"), -1);
    EXPECT_EQ(rowOf({1})->get_number_of_struct_fields(), 0U);
}

TEST_F(Slots, OfAStructAreFoundByEitherKindOfUtf8) {
    const char* plain = "\xF0\x9D\x92\x9C";
    const char* modified = "\xED\xA0\xB5\xED\xB2\x9C";
    const qxArrayOwner array(qxCreateStructMatrix(1, 1, 1, &plain));
    EXPECT_EQ(qxGetFieldNumber(array.get(), modified), 0);
    EXPECT_EQ(qxAddField(array.get(), modified), 0);
    EXPECT_STREQ(array->get_struct_field_name_by_number(0), plain);
    EXPECT_EQ(qxGetFieldNumber(array.get(), "\xC3\xA9"), -1);
}

}  // namespace
