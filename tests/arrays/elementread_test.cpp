#include "arrays/natives.h"
#include "arrays/objectread.h"
#include "tether/exceptions.h"

namespace nativevrl::test {

namespace {

using ElementRead = JvmTest;

/// Java sees logical and char elements without a sign, and all others with one.
template <typename T, typename Case>
T modelOfRead(typename Case::Stored stored) {
    using Stored = typename Case::Stored;
    if constexpr (std::is_floating_point_v<Stored> || Case::id == qxLOGICAL_CLASS || Case::id == qxCHAR_CLASS) {
        return modelCast<T>(stored);
    } else {
        return modelCast<T>(static_cast<std::make_signed_t<Stored>>(stored));
    }
}

TEST_F(ElementRead, GivesEveryClassAsEveryJavaType) {
    forEachClass([&](auto one) {
        using Case = decltype(one);
        const auto values = Case::values();
        const Held held(env, Case::row(values, qxCOMPLEX));
        forEachJavaType([&](auto type) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                const auto index = static_cast<jint>(i);
                const auto subscripts = intArray(env, {1, index + 1});
                const auto expected = decltype(getAt(type, env, held.handle, index, true)){};
                const auto model = modelOfRead<std::decay_t<decltype(expected)>, Case>(values[i]);
                const bool real = held->imagData() == nullptr || i % 2 == 0;
                EXPECT_TRUE(isSame(getAt(type, env, held.handle, index, real), model))
                    << "class " << Case::id << ", value " << +values[i] << ", as " << typeid(model).name();
                EXPECT_TRUE(isSame(getAt(type, env, held.handle, subscripts, real), model))
                    << "class " << Case::id << ", value " << +values[i] << ", as " << typeid(model).name();
                env->DeleteLocalRef(subscripts);
            }
        });
        expectNoThrow(env);
    });
}

TEST_F(ElementRead, FindsStoredElementsOfSparseArraysAndZeroInGaps) {
    const Held held(env, qxCreateSparse(4, 5, 2, qxCOMPLEX));
    setAt(env, held.handle, jint{2 + 4 * 3}, jdouble{2}, true);
    setAt(env, held.handle, jint{2 + 4 * 3}, jdouble{3}, false);
    setAt(env, held.handle, jint{0 + 4 * 4}, jdouble{7}, true);
    for (jint row = 0; row < 4; ++row) {
        for (jint column = 0; column < 5; ++column) {
            SCOPED_TRACE(testing::Message() << row << ", " << column);
            const bool first = row == 2 && column == 3;
            const bool second = row == 0 && column == 4;
            const double real = first ? 2 : second ? 7 : 0;
            const double imag = first ? 3 : 0;
            const jintArray subscripts = intArray(env, {row + 1, column + 1});
            for (const bool part : {true, false}) {
                EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, row + 4 * column, part), part ? real : imag);
                EXPECT_EQ(getAt(JavaType<jshort>{}, env, held.handle, subscripts, part), part ? real : imag);
                EXPECT_EQ(unboxed<jdouble>(env, getAt(JavaType<jobject>{}, env, held.handle, row + 4 * column, part)),
                          part ? real : imag);
                EXPECT_EQ(unboxed<jdouble>(env, getAt(JavaType<jobject>{}, env, held.handle, subscripts, part)),
                          part ? real : imag);
            }
        }
    }
}

TEST_F(ElementRead, ReachesFarIntoAHugeSparseArray) {
    const Held held(env, qxCreateSparse(2147483647, 2147483647, 1, qxREAL));
    const jintArray last = intArray(env, {2147483647, 2147483647});
    ASSERT_NE(held.array, nullptr);
    setAt(env, held.handle, last, jdouble{5}, true);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, last, true), 5);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{2147483647}, true), 0) << "row 0 of column 1";
    expectNoThrow(env);
}

struct Refusal {
    const char* exception;
    const char* message;
};

/// What refuses reads refuses writes in the same words; reads of objects are left out where they have their own.
template <typename Address>
void expectRefused(JNIEnv* env, jobject handle, Address address, bool real, Refusal refusal, bool alsoObject = true) {
    forEachJavaType([&](auto type) {
        using T = std::decay_t<decltype(getAt(type, env, handle, address, real))>;
        if (real || namesPart<T>) {
            EXPECT_EQ(getAt(type, env, handle, address, real), T{});
            expectThrown(env, refusal.exception, refusal.message);
            setAt(env, handle, address, T{1}, real);
            expectThrown(env, refusal.exception, refusal.message);
        }
    });
    if (alsoObject) {
        EXPECT_EQ(getAt(JavaType<jobject>{}, env, handle, address, real), nullptr);
        expectThrown(env, refusal.exception, refusal.message);
    }
    setAt(env, handle, address, boxed<jint>(env, 1), real);
    expectThrown(env, refusal.exception, refusal.message);
}

TEST_F(ElementRead, RefusesBadAddressesInTheStatedOrder) {
    constexpr const char* outOfBounds = "java/lang/ArrayIndexOutOfBoundsException";
    const Refusal index{outOfBounds, "Index out of bounds"};
    const Refusal range{outOfBounds, "Dimensions out of range"};
    const Refusal count{outOfBounds, "Incompatible number of dimensions"};
    const Refusal part{"java/lang/IllegalArgumentException", "Can not get imaginary part of real array"};
    const Held matrix(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const Held sparse(env, qxCreateSparse(3, 4, 0, qxREAL));
    for (jobject handle : {matrix.handle, sparse.handle}) {
        for (jint bad : {-1, 12, std::numeric_limits<jint>::min(), std::numeric_limits<jint>::max()}) {
            expectRefused(env, handle, bad, true, index);
            expectRefused(env, handle, bad, false, part);
        }
        for (const auto& bad :
             std::vector<std::vector<jint>>{{0, 1}, {4, 1}, {1, 5}, {-1, 1}, {1, std::numeric_limits<jint>::min()}}) {
            expectRefused(env, handle, intArray(env, bad), true, range);
            expectRefused(env, handle, intArray(env, bad), false, part);
        }
        for (const auto& bad : std::vector<std::vector<jint>>{{}, {1}, {1, 1, 1}}) {
            expectRefused(env, handle, intArray(env, bad), true, count);
        }
        expectRefused(env, handle, jintArray{nullptr}, true, count);
    }
    const Held empty(env, qxCreateNumericMatrix(0, 0, qxDOUBLE_CLASS, qxREAL));
    const Held noClass(env, qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL));
    expectRefused(env, noClass.handle, jint{0}, true, index);
    expectRefused(env, empty.handle, jint{0}, true, index);
    expectRefused(env, empty.handle, intArray(env, {1, 1}), true, range);
}

TEST_F(ElementRead, RefusesNullArraysAndClassesWithoutPrimitives) {
    const jobject null = newHandle(env, nullptr);
    const jintArray ones = intArray(env, {1, 1});
    constexpr const char* runtime = "java/lang/RuntimeException";
    forEachJavaType([&](auto type) {
        using T = std::decay_t<decltype(getAt(type, env, null, ones, true))>;
        EXPECT_EQ(getAt(type, env, null, jint{0}, true), T{});
        expectThrown(env, runtime, "qxGet<TYPE>At failed: NULL array pointer");
        EXPECT_EQ(getAt(type, env, null, ones, true), T{});
        expectThrown(env, runtime, "qxGet<TYPE>At failed: NULL array pointer");
        setAt(env, null, jint{0}, T{1}, true);
        expectThrown(env, runtime, "qxSetAt failed: NULL array pointer");
        setAt(env, null, ones, T{1}, true);
        expectThrown(env, runtime, "qxSetAt failed: NULL array pointer");
    });
    getAt(JavaType<jobject>{}, env, null, jint{0}, true);
    expectThrown(env, runtime, "qxGetObjectAt - NULL pointer error");
    getAt(JavaType<jobject>{}, env, null, ones, true);
    expectThrown(env, runtime, "qxGetObjectAt - NULL pointer error");
    EXPECT_THROW(elementToObject(env, nullptr, 0, true), tether::NullPointerException);
    expectThrown(env, "java/lang/NullPointerException", "Null qxArray pointer reference");

    int payload = 0;
    const std::pair<qxArray*, const char*> classes[] = {
        {qxCreateCellMatrix(1, 1), "attempt to apply primitive data visitor to non-primitive type qxCELL_CLASS"},
        {qxCreateStructMatrix(1, 1, 0, nullptr),
         "attempt to apply primitive data visitor to non-primitive type qxSTRUCT_CLASS"},
        {qxCreateOpaque("kind", &payload, [](void*) {}),
         "attempt to apply primitive data visitor to non-primitive type qxOPAQUE_CLASS"},
        {qxCreateFunctionHandle("f"), "unrecognized qxArray class id: 16"}};
    for (const auto& [array, message] : classes) {
        const Held held(env, array);
        expectRefused(env, held.handle, jint{0}, true, {runtime, message}, false);
        expectRefused(env, held.handle, ones, true, {runtime, message}, false);
        expectRefused(env, held.handle, jint{1}, true,
                      {"java/lang/ArrayIndexOutOfBoundsException", "Index out of bounds"});
    }
}

TEST_F(ElementRead, BoxesEveryClassInItsJavaType) {
    forEachClass([&](auto one) {
        using Case = decltype(one);
        const auto values = Case::values();
        const Held held(env, Case::row(values));
        using Natural = NaturalType<Case>;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const jobject object = getAt(JavaType<jobject>{}, env, held.handle, static_cast<jint>(i), true);
            ASSERT_EQ(classNameOf(env, object), JPrimitive<Natural>::boxedClass);
            const Natural expected = getAt(JavaType<Natural>{}, env, held.handle, static_cast<jint>(i), true);
            EXPECT_TRUE(isSame(unboxed<Natural>(env, object), expected)) << Case::id << " " << i;
        }
    });
}

TEST_F(ElementRead, GivesSharedCopiesOfInnerArrays) {
    const char* fields[] = {"a"};
    for (qxArray* parent : {qxCreateCellMatrix(1, 2), qxCreateStructMatrix(1, 2, 1, fields)}) {
        const Held held(env, parent);
        qxSetCell(parent, 1, qxCreateString("inner"));
        const jobject inner = getAt(JavaType<jobject>{}, env, held.handle, jint{1}, true);
        const jobject gap = getAt(JavaType<jobject>{}, env, held.handle, intArray(env, {1, 1}), true);
        ASSERT_EQ(classNameOf(env, inner), "com/norvane/toolbox/loomkit/NVCharArray");
        ASSERT_EQ(classNameOf(env, gap), "com/norvane/toolbox/loomkit/NVNumericArray");
        constexpr const char* getValue = "()Lcom/norvane/toolbox/loomkit/internal/NativePtr;";
        const qxArray* copy = arrayIn(env, callObject(env, inner, "getValue", getValue));
        EXPECT_NE(copy, qxGetCell(parent, 1));
        EXPECT_TRUE(qxSharesStorage(copy, qxGetCell(parent, 1)));
        EXPECT_EQ(qxGetNumberOfElements(arrayIn(env, callObject(env, gap, "getValue", getValue))), 0u);
        EXPECT_EQ(qxGetCell(parent, 0), nullptr) << "the slot stays null";
        callVoid(env, inner, "close", "()V");
        callVoid(env, gap, "close", "()V");
    }
    const Held function(env, qxCreateFunctionHandle("f"));
    const jobject name = getAt(JavaType<jobject>{}, env, function.handle, jint{0}, true);
    EXPECT_EQ(classNameOf(env, name), "com/norvane/toolbox/loomkit/NVCharArray");
    callVoid(env, name, "close", "()V");
}

TEST_F(ElementRead, RefusesObjectsThatHaveNoJavaForm) {
    int payload = 0;
    const Held opaque(env, qxCreateOpaque("kind", &payload, [](void*) {}));
    getAt(JavaType<jobject>{}, env, opaque.handle, jint{0}, true);
    expectThrown(env, "java/lang/RuntimeException", "could not convert from array class type");
    const Held logical(env, qxCreateSparseLogicalMatrix(2, 2, 0));
    getAt(JavaType<jobject>{}, env, logical.handle, jint{3}, true);
    expectThrown(env, "java/lang/IllegalArgumentException",
                 "The numeric value specified can not be converted to the required type.");
    EXPECT_EQ(getAt(JavaType<jboolean>{}, env, logical.handle, jint{3}, true), JNI_FALSE);
}

}  // namespace

}  // namespace nativevrl::test
