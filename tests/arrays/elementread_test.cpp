#include "arrays/natives.h"
#include "arrays/objectread.h"
#include "support/heapblocks.h"
#include "tether/exceptions.h"

namespace nativevrl::test::elementread {

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

TEST_F(ElementRead, GivesEveryClassAsEveryJavaTypeAndBoxesItInItsOwn) {
    forEachClass([&](auto one) {
        using Case = decltype(one);
        using Natural = NaturalType<Case>;
        const auto values = Case::values();
        const Held held(env, Case::row(values, qxCOMPLEX));
        for (std::size_t i = 0; i < values.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "class " << Case::id << ", value " << +values[i]);
            const auto index = static_cast<jint>(i);
            const auto subscripts = intArray(env, {1, index + 1});
            const bool real = held->imagData() == nullptr || i % 2 == 0;
            forEachJavaType([&](auto type) {
                using T = decltype(typeOf(type));
                const T model = modelOfRead<T, Case>(values[i]);
                EXPECT_TRUE(isSame(getAt(type, env, held.handle, index, real), model)) << typeid(T).name();
                EXPECT_TRUE(isSame(getAt(type, env, held.handle, subscripts, real), model)) << typeid(T).name();
            });
            const jobject object = getAt(JavaType<jobject>{}, env, held.handle, index, real);
            EXPECT_TRUE(isSame(unboxed<Natural>(env, object), modelOfRead<Natural, Case>(values[i])));
            env->DeleteLocalRef(object);
            env->DeleteLocalRef(subscripts);
        }
        expectNoThrow(env);
    });
}

TEST_F(ElementRead, ReachesFarIntoAHugeSparseArray) {
    const Held held(env, qxCreateSparse(2147483647, 2147483647, 1, qxREAL));
    const jintArray last = intArray(env, {2147483647, 2147483647});
    ASSERT_NE(held.array, nullptr);
    setAt(env, held.handle, last, jdouble{5}, true);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, last, true), 5);
    EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held.handle, jint{2147483647}, true), 0) << "row 0 of column 1";
}

/// What refuses reads refuses writes in the same words; reads of objects are left out where they have their own.
template <typename Address>
void expectBothRefused(JNIEnv* env, jobject handle, Address address, bool real, const char* exception,
                       const char* message, bool alsoObject = true) {
    forEachJavaType([&](auto type) {
        using T = decltype(typeOf(type));
        if (real || namesPart<T>) {
            expectRefused(env, getAt(type, env, handle, address, real), exception, message);
            setAt(env, handle, address, T{1}, real);
            expectThrown(env, exception, message);
        }
    });
    if (alsoObject) {
        expectRefused(env, getAt(JavaType<jobject>{}, env, handle, address, real), exception, message);
    }
    setAt(env, handle, address, boxed<jint>(env, 1), real);
    expectThrown(env, exception, message);
}

TEST_F(ElementRead, RefusesBadAddressesInTheStatedOrder) {
    constexpr jint least = std::numeric_limits<jint>::min();
    const Held matrix(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const Held sparse(env, qxCreateSparse(3, 4, 0, qxREAL));
    const Held empty(env, qxCreateNumericMatrix(0, 0, qxDOUBLE_CLASS, qxREAL));
    const Held noClass(env, qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL));
    const auto refused = [&](const Held& held, auto address, const char* message) {
        expectBothRefused(env, held.handle, address, true, outOfBounds, message);
        if (qxGetNumberOfElements(held.array.get()) != 0) {
            expectBothRefused(env, held.handle, address, false, "java/lang/IllegalArgumentException",
                              "Can not get imaginary part of real array");
        }
    };
    for (const Held* held : {&matrix, &sparse}) {
        for (const jint bad : {-1, 12, least, std::numeric_limits<jint>::max()}) {
            refused(*held, bad, "Index out of bounds");
        }
        for (const auto& bad : std::vector<std::vector<jint>>{{0, 1}, {4, 1}, {1, 5}, {-1, 1}, {1, least}}) {
            refused(*held, intArray(env, bad), "Dimensions out of range");
        }
        for (const auto& bad : std::vector<std::vector<jint>>{{}, {1}, {1, 1, 1}}) {
            refused(*held, intArray(env, bad), "Incompatible number of dimensions");
        }
        refused(*held, jintArray{nullptr}, "Incompatible number of dimensions");
    }
    refused(noClass, jint{0}, "Index out of bounds");
    refused(empty, jint{0}, "Index out of bounds");
    refused(empty, intArray(env, {1, 1}), "Dimensions out of range");
}

TEST_F(ElementRead, RefusesNullArraysAndClassesWithoutPrimitives) {
    const jobject null = newHandle(env, nullptr);
    const jintArray ones = intArray(env, {1, 1});
    constexpr const char* runtime = "java/lang/RuntimeException";
    const auto refused = [&](auto address) {
        forEachJavaType([&](auto type) {
            expectRefused(env, getAt(type, env, null, address, true), runtime,
                          "qxGet<TYPE>At failed: NULL array pointer");
            setAt(env, null, address, decltype(typeOf(type)){1}, true);
            expectThrown(env, runtime, "qxSetAt failed: NULL array pointer");
        });
        expectRefused(env, getAt(JavaType<jobject>{}, env, null, address, true), runtime,
                      "qxGetObjectAt - NULL pointer error");
    };
    refused(jint{0});
    refused(ones);
    EXPECT_THROW(elementToObject(env, nullptr, 0, true), tether::NullPointerException);
    expectThrown(env, "java/lang/NullPointerException", "Null qxArray pointer reference");

    int payload = 0;
    const std::string visited = "attempt to apply primitive data visitor to non-primitive type ";
    const std::pair<qxArray*, std::string> classes[] = {
        {qxCreateCellMatrix(1, 1), visited + "qxCELL_CLASS"},
        {qxCreateStructMatrix(1, 1, 0, nullptr), visited + "qxSTRUCT_CLASS"},
        {qxCreateOpaque("kind", &payload, [](void*) {}), visited + "qxOPAQUE_CLASS"},
        {qxCreateFunctionHandle("f"), "unrecognized qxArray class id: 16"}};
    for (const auto& [array, message] : classes) {
        const Held held(env, array);
        expectBothRefused(env, held.handle, jint{0}, true, runtime, message.c_str(), false);
        expectBothRefused(env, held.handle, ones, true, runtime, message.c_str(), false);
        expectBothRefused(env, held.handle, jint{1}, true, outOfBounds, "Index out of bounds");
    }
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

TEST_F(ElementRead, AndAWriteIsOneJavaCallAndNoBlockOnTheHeap) {
    using loomkit::test::heapBlocksGiven;
    const Held held(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const auto expectCost = [&](int pins, auto address) {
        const std::function<void()> accesses[] = {[&] { getAt(JavaType<jdouble>{}, env, held.handle, address, true); },
                                                  [&] { setAt(env, held.handle, address, jdouble{1}, true); }};
        for (const auto& access : accesses) {
            access();  // the class proxies are there from here on
            const JniCounter counter(env);
            const std::size_t before = heapBlocksGiven;
            access();
            EXPECT_EQ(heapBlocksGiven, before) << "blocks on the heap";
            EXPECT_EQ(counter.calls(&JNINativeInterface_::NewLocalRef), 1);
            EXPECT_EQ(counter.calls(&JNINativeInterface_::CallLongMethodA), 1);
            EXPECT_EQ(counter.calls(&JNINativeInterface_::GetIntArrayElements), pins);
            EXPECT_EQ(counter.localReferences() + counter.pinnedBlocks(), 0);
        }
    };
    expectCost(0, jint{5});
    expectCost(1, intArray(env, {2, 3}));
}

}  // namespace nativevrl::test::elementread
