#include "arrays/natives.h"

#include <cstring>

namespace nativevrl::test::wholedata {

class WholeData : public JvmTest {
protected:
    jobject getData(jobject handle, bool real) { return NVKRT(qxGetData)(env, nullptr, handle, real); }
    void setData(jobject handle, jobject data, bool real) { NVKRT(qxSetData)(env, nullptr, handle, data, real); }
    jobject getCell(jobject handle, jint index) { return NVKRT(qxGetCell)(env, nullptr, handle, index); }
    void setCell(jobject handle, jint index, jobject value) { NVKRT(qxSetCell)(env, nullptr, handle, index, value); }

    jobject newCell(qxArray* array) {
        return newObject(env, "com/norvane/toolbox/loomkit/NVCellArray",
                         "(Lcom/norvane/toolbox/loomkit/internal/NativePtr;)V",
                         {objectArgument(newHandle(env, array))});
    }
};

TEST_F(WholeData, CrossesAsTheJavaTypeOfItsClass) {
    forEachClass([&](auto one) {
        using Case = decltype(one);
        const auto values = Case::values();
        const Held held(env, Case::row(values, qxCOMPLEX));
        const bool real = held->imagData() == nullptr;
        const std::size_t bytes = values.size() * sizeof(typename Case::Stored);
        const jobject data = getData(held.handle, real);
        const auto crossed = toVector<NaturalType<Case>>(env, data);
        ASSERT_EQ(crossed.size(), values.size()) << Case::id;
        EXPECT_EQ(std::memcmp(crossed.data(), values.data(), bytes), 0) << Case::id;
        std::fill_n(Case::part(held.array.get(), real), values.size(), typename Case::Stored{});
        setData(held.handle, data, real);
        EXPECT_EQ(std::memcmp(Case::part(held.array.get(), real), values.data(), bytes), 0) << Case::id;
    });
}

TEST_F(WholeData, RefusesWhatHasNoSuchData) {
    int payload = 0;
    const Held opaque(env, qxCreateOpaque("kind", &payload, [](void*) {}));
    const Held bare(env, qxCreateStructMatrix(2, 1, 0, nullptr));
    const Held unknown(env, qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL));
    const Held matrix(env, qxCreateNumericMatrix(1, 2, qxDOUBLE_CLASS, qxREAL));
    const Held cell(env, qxCreateCellMatrix(1, 1));
    const jobject doubles = primitiveArray<jdouble>(env, {1});
    const char* unsupported = "java/lang/UnsupportedOperationException";
    const char* notReal = "Can not get imaginary part of real array";
    expectRefused(env, getData(opaque.handle, true), "java/lang/NullPointerException", "qxArray data is NULL");
    expectRefused(env, getData(bare.handle, true), "java/lang/NullPointerException", "qxArray data is NULL");
    expectRefused(env, getData(unknown.handle, true), unsupported,
                  "Can not convert the given TAVRIX array type to a Java type.");
    expectRefused(env, getData(matrix.handle, false), "java/lang/IllegalArgumentException", notReal);
    setData(matrix.handle, doubles, false);
    expectThrown(env, "java/lang/IllegalArgumentException", notReal);
    setData(cell.handle, doubles, true);
    expectThrown(env, unsupported, "setData/setImagData not supported for TAVRIX arrays of this type.");
    setData(matrix.handle, doubles, true);
    EXPECT_EQ(toVector<jdouble>(env, getData(matrix.handle, true)), (std::vector<jdouble>{1, 0}))
        << "a short source leaves the rest";
}

TEST_F(WholeData, GoesIntoASparseArrayUpToItsCapacity) {
    const Held sparse(env, qxCreateSparse(40, 40, 2, qxREAL));
    setAt(env, sparse.handle, jint{3}, jdouble{1}, true);
    setAt(env, sparse.handle, jint{5}, jdouble{1}, true);
    setData(sparse.handle, primitiveArray<jint>(env, std::vector<jint>(100000, 7)), true);
    EXPECT_EQ(toVector<jdouble>(env, getData(sparse.handle, true)), (std::vector<jdouble>{7, 7}));
    setData(sparse.handle, objectArray(env, "java/lang/Object", std::vector<jobject>(1000, boxed<jint>(env, 8))), true);
    EXPECT_EQ(toVector<jdouble>(env, getData(sparse.handle, true)), (std::vector<jdouble>{8, 8}));
}

TEST_F(WholeData, CellsAreReplacedAndReadAsSharedCopies) {
    const Held held(env, qxCreateCellMatrix(1, 2));
    const jobject gap = getCell(held.handle, 1);
    EXPECT_TRUE(qxIsEmpty(arrayOf(env, gap)));
    EXPECT_EQ(qxGetCell(held.array.get(), 1), nullptr) << "the slot stays null";
    close(env, gap);
    setCell(held.handle, 1, primitiveArray<jint>(env, {1, 2, 3}));
    const std::size_t live = qxLiveArrayCount();
    setCell(held.handle, 1, javaString(env, u"text"));
    EXPECT_EQ(qxLiveArrayCount(), live) << "the old element ends";
    const jobject wrapper = getCell(held.handle, 1);
    EXPECT_EQ(classNameOf(env, wrapper), "com/norvane/toolbox/loomkit/NVCharArray");
    EXPECT_TRUE(qxSharesStorage(arrayOf(env, wrapper), qxGetCell(held.array.get(), 1)));
    setCell(held.handle, 1, nullptr);
    EXPECT_EQ(qxGetString(arrayOf(env, wrapper)), "text") << "the wrapper keeps what the cell has given up";
    EXPECT_TRUE(qxIsEmpty(qxGetCell(held.array.get(), 1)));
    close(env, wrapper);
}

TEST_F(WholeData, ACellThatIsPutIntoItselfAndHasNoRoomForItsCopyStays) {
    // Tables of so many elements fit no address space, so there is no room for another copy.
    const Held huge(env, qxCreateCellMatrix(1, 8000));
    for (std::size_t slot = 0; slot < 8000; ++slot) {
        qxSetCell(huge.array.get(), slot, qxCreateSparse(1, 1, 0, qxREAL));
        qxSetNzmax(qxGetCell(huge.array.get(), slot), 0xFFFFFFFF);
    }
    const jobject hugeAlias = newCell(qxCreateSharedDataCopy(huge.array.get()));
    const qxArray* kept = qxGetCell(huge.array.get(), 7);
    setCell(huge.handle, 7, hugeAlias);
    expectThrown(env, "java/lang/OutOfMemoryError", nullptr);
    EXPECT_EQ(qxGetCell(huge.array.get(), 7), kept);
    close(env, hugeAlias);
}

TEST_F(WholeData, SlotsOfStructsCountFields) {
    const char* fields[] = {"a", "b", "c"};
    const Held held(env, qxCreateStructMatrix(2, 2, 3, fields));
    setCell(held.handle, 11, boxed<jboolean>(env, JNI_TRUE));
    expectNoThrow(env);
    EXPECT_EQ(qxGetClassID(qxGetField(held.array.get(), 3, "c")), qxLOGICAL_CLASS);
    const Held cell(env, qxCreateCellMatrix(1, 1));
    // The index is refused before the value is looked at, which would fail as well.
    const jobject failing = newObject(env, "java/lang/Object", "()V");
    for (const auto& [handle, index] :
         {std::pair(held.handle, 12), {held.handle, -1}, {cell.handle, 1}, {cell.handle, -1}}) {
        expectRefused(env, getCell(handle, index), outOfBounds, "Index out of bounds");
        setCell(handle, index, failing);
        expectThrown(env, outOfBounds, "Index out of bounds");
    }
    const Held number(env, qxCreateDoubleScalar(1));
    setCell(number.handle, 0, failing);
    expectThrown(env, "java/lang/IllegalArgumentException", "The array has no cells or fields.");
    const qxArray* kept = qxGetCell(held.array.get(), 11);
    setCell(held.handle, 11, failing);
    expectThrownClass(env, "java/lang/RuntimeException");
    EXPECT_EQ(qxGetCell(held.array.get(), 11), kept) << "a value that fails leaves the old element";
}

}  // namespace nativevrl::test::wholedata
