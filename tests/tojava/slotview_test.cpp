/// Cells, structs and function handles as arrays of wrappers.

#include "tojava/reads.h"

namespace nativevrl::test {

namespace {

class SlotView : public JvmTest {
protected:
    /// Checks NVArray[]...[] and one wrapper for each slot of `extents`, and ends the wrappers. A null slot is a real
    /// empty double array; any other shares its data.
    void expectSlots(const Held& held, const Extents& extents, const std::vector<std::string>& wrappers) {
        const jobject view = readView(env, held.handle, true);
        checkNested(env, view, extents, "[Lcom/norvane/toolbox/loomkit/NVArray;",
                    [&](jobject row, std::size_t index, std::size_t stride) {
                        for (std::size_t i = 0; i < lengthOf(env, row); ++i) {
                            const std::size_t slot = index + i * stride;
                            expectSlot(elementAt(env, row, i), qxGetCell(held.array.get(), slot), wrappers[slot]);
                        }
                    });
    }

private:
    void expectSlot(jobject wrapper, const qxArray* slot, const std::string& className) {
        ASSERT_EQ(classNameOf(env, wrapper), "com/norvane/toolbox/loomkit/" + className);
        const qxArray* array =
            arrayIn(env, callObject(env, wrapper, "getValue", "()Lcom/norvane/toolbox/loomkit/internal/NativePtr;"));
        if (slot == nullptr) {
            EXPECT_EQ(qxGetClassID(array), qxDOUBLE_CLASS);
            EXPECT_TRUE(qxIsEmpty(array) && !qxIsComplex(array));
        } else {
            EXPECT_TRUE(array != slot && qxSharesStorage(array, slot));
        }
        callVoid(env, wrapper, "close", "()V");
    }
};

TEST_F(SlotView, WrapsASharedCopyOfEachCellByItsClass) {
    const Held cell(env, qxCreateCellMatrix(2, 3));
    qxSetCell(cell.array.get(), 0, qxCreateDoubleScalar(1));
    qxSetCell(cell.array.get(), 1, qxCreateFunctionHandle("sin"));
    qxSetCell(cell.array.get(), 2, qxCreateString("text"));
    qxSetCell(cell.array.get(), 3, qxCreateCellMatrix(1, 1));
    qxSetCell(cell.array.get(), 5, qxCreateLogicalScalar(true));
    expectSlots(
        cell, {2, 3},
        {"NVNumericArray", "NVFunctionHandle", "NVCharArray", "NVCellArray", "NVNumericArray", "NVLogicalArray"});
}

TEST_F(SlotView, KeepsEveryShape) {
    const std::vector<Extents> shapes = {{0, 0}, {0, 2}, {2, 0}, {1, 5}, {70, 2}, {2, 0, 3}, {3, 2, 2}, {2, 1, 2, 2}};
    for (const Extents& extents : shapes) {
        const Held cell(env, qxCreateCellArray(static_cast<std::uint32_t>(extents.size()), extents.data()));
        expectSlots(cell, extents, std::vector<std::string>(140, "NVNumericArray"));
    }
}

TEST_F(SlotView, OfAStructSeesAsManySlotsAsItHasElements) {
    const char* fields[] = {"a", "b"};
    const Held pairs(env, qxCreateStructMatrix(1, 2, 2, fields));
    qxSetCell(pairs.array.get(), 1, qxCreateString("b of the first"));
    qxSetCell(pairs.array.get(), 2, qxCreateFunctionHandle("unseen"));
    expectSlots(pairs, {1, 2}, {"NVNumericArray", "NVCharArray"});
    const Held handle(env, qxCreateFunctionHandle("sin"));
    expectSlots(handle, {1, 1}, {"NVCharArray"});
    const Held bare(env, qxCreateStructMatrix(1000, 1000, 0, nullptr));
    EXPECT_EQ(readView(env, bare.handle, true), nullptr);
    expectThrown(env, "java/lang/NullPointerException", "qxArray data is NULL");
}

}  // namespace

}  // namespace nativevrl::test
