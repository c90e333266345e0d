/// Cells, structs and function handles as arrays of wrappers.

#include "tojava/reads.h"

namespace nativevrl::test::slotview {

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
        for (std::size_t i = 0; i < wrappers.size() && i < qxGetNumberOfElements(held.array.get()); ++i) {
            const auto slot = static_cast<jint>(i);
            const qxArray* inner = qxGetCell(held.array.get(), i);
            expectSlot(getAt(JavaType<jobject>{}, env, held.handle, slot, true), inner, wrappers[i]);
            expectSlot(NVKRT(qxGetCell)(env, nullptr, held.handle, slot), inner, wrappers[i]);
            const jobject data = NVKRT(qxGetData)(env, nullptr, held.handle, true);
            ASSERT_EQ(classNameOf(env, data), "[Lcom/norvane/toolbox/loomkit/NVArray;");
            for (std::size_t j = 0; j < lengthOf(env, data); ++j) {
                expectSlot(elementAt(env, data, j), qxGetCell(held.array.get(), j), wrappers[j]);
            }
        }
    }

private:
    void expectSlot(jobject wrapper, const qxArray* slot, const std::string& className) {
        ASSERT_EQ(classNameOf(env, wrapper), "com/norvane/toolbox/loomkit/" + className);
        const qxArray* array = arrayOf(env, wrapper);
        if (slot == nullptr) {
            EXPECT_EQ(qxGetClassID(array), qxDOUBLE_CLASS);
            EXPECT_TRUE(qxIsEmpty(array) && !qxIsComplex(array));
        } else {
            EXPECT_TRUE(array != slot && qxSharesStorage(array, slot));
        }
        close(env, wrapper);
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
    expectRefused(env, readView(env, bare.handle, true), "java/lang/NullPointerException", "qxArray data is NULL");
}

}  // namespace nativevrl::test::slotview
