#include "arrays/natives.h"
#include "layout/refuseclass.h"

namespace nativevrl::test::elementwrite {

using ElementWrite = JvmTest;

/// What a value of a Java type leaves in an element.
template <typename Case, typename V>
typename Case::Stored modelOfWrite(V value) {
    using Stored = typename Case::Stored;
    return Case::id == qxLOGICAL_CLASS ? static_cast<Stored>(modelCast<std::uint8_t>(value) != 0)
                                       : modelCast<Stored>(value);
}

/// The edge values of each Java type are those of the class with its bits.
template <typename V>
auto edgeValues() {
    if constexpr (std::is_same_v<V, jdouble>) {
        return ClassCase<jdouble, qxDOUBLE_CLASS>::values();
    } else if constexpr (std::is_same_v<V, jfloat>) {
        return ClassCase<jfloat, qxSINGLE_CLASS>::values();
    } else if constexpr (std::is_same_v<V, jboolean>) {
        return std::vector<jboolean>{JNI_FALSE, JNI_TRUE};
    } else {
        return ClassCase<V, qxINT64_CLASS>::values();
    }
}

TEST_F(ElementWrite, StoresEveryJavaTypeInEveryClass) {
    forEachClass([&](auto one) {
        using Case = decltype(one);
        const Held held(env, Case::row({0, 0, 0}, qxCOMPLEX));
        const jintArray second = intArray(env, {1, 2});
        forEachJavaType([&](auto type) {
            using V = decltype(getAt(type, env, held.handle, jint{0}, true));
            const bool real = held->imagData() == nullptr || !namesPart<V>;
            for (const V value : edgeValues<V>()) {
                const auto expected = modelOfWrite<Case>(value);
                setAt(env, held.handle, jint{0}, value, true);
                setAt(env, held.handle, second, value, real);
                EXPECT_TRUE(isSame(Case::part(held.array.get(), true)[0], expected) &&
                            isSame(Case::part(held.array.get(), real)[1], expected))
                    << "class " << Case::id << ", value " << +value << " of " << typeid(V).name();
            }
        });
        expectNoThrow(env);
        EXPECT_TRUE(isSame(Case::part(held.array.get(), true)[2], typename Case::Stored{}));
    });
}

TEST_F(ElementWrite, ReadsObjectsAsTheElementWants) {
    forEachClass([&](auto one) {
        using Case = decltype(one);
        using Stored = typename Case::Stored;
        const Held held(env, Case::row({5, 5}));
        const auto stored = [&](jobject object) {
            setAt(env, held.handle, intArray(env, {1, 2}), object, true);
            setAt(env, held.handle, jint{0}, object, true);
            expectNoThrow(env);
            const Stored* elements = Case::part(held.array.get(), true);
            EXPECT_TRUE(isSame(elements[0], elements[1]));
            return elements[0];
        };
        const bool isLogical = Case::id == qxLOGICAL_CLASS;
        EXPECT_EQ(stored(boxed<jint>(env, 77)), static_cast<Stored>(isLogical ? 1 : 77)) << Case::id;
        EXPECT_EQ(stored(boxed<jdouble>(env, 0.5)),
                  std::is_floating_point_v<Stored> ? Stored(0.5) : Stored(isLogical ? 1 : 0));
        EXPECT_EQ(stored(boxed<jboolean>(env, JNI_TRUE)), Stored{1}) << Case::id;
        EXPECT_EQ(stored(boxed<jchar>(env, 0x100)), isLogical ? Stored{0} : static_cast<Stored>(0x100)) << Case::id;
        const Stored digit = Case::id == qxCHAR_CLASS ? Stored{'6'} : isLogical ? Stored{0} : Stored{6};
        EXPECT_EQ(stored(javaString(env, u"6")), digit) << Case::id;
        EXPECT_EQ(stored(findClass(env, "java/lang/Object")), Stored{0}) << "an object of no kind that is read";
    });
}

TEST_F(ElementWrite, KeepsTheElementWhenAnObjectCannotBeRead) {
    const Held dense(env, ClassCase<double, qxDOUBLE_CLASS>::row({5}));
    const Held sparse(env, qxCreateSparse(1, 1, 0, qxREAL));
    setAt(env, sparse.handle, jint{0}, jdouble{5}, true);
    const jobject failing = newObject(env, "com/norvane/toolbox/loomkit/testing/FailingNumber", "()V");
    for (const Held* held : {&dense, &sparse}) {
        setAt(env, held->handle, jint{0}, failing, true);
        expectThrown(env, "java/lang/IllegalStateException", "this number has no value");
        setAt(env, held->handle, jint{0}, jobject{javaString(env, u"six")}, true);
        expectThrownClass(env, "java/lang/NumberFormatException");
        setAt(env, held->handle, jint{0}, jobject{nullptr}, true);
        expectThrown(env, "java/lang/NullPointerException", nullptr);
        EXPECT_EQ(getAt(JavaType<jdouble>{}, env, held->handle, jint{0}, true), 5);
    }
}

TEST_F(ElementWrite, RefusesSparseClassesByTheirType) {
    const std::string visited = "attempt to apply primitive type visitor to non-primitive type ";
    const std::pair<qxClassID, std::string> cases[] = {{qxCELL_CLASS, visited + "qxCELL_CLASS"},
                                                       {qxSTRUCT_CLASS, visited + "qxSTRUCT_CLASS"},
                                                       {qxOPAQUE_CLASS, visited + "qxOPAQUE_CLASS"},
                                                       {qxOBJECT_CLASS, visited + "qxOBJECT_CLASS"},
                                                       {qxFUNCTION_CLASS, "unrecognized qxArray class id: 16"},
                                                       {qxUNKNOWN_CLASS, "unrecognized qxArray class id: 0"}};
    for (const auto& [id, message] : cases) {
        try {
            refuseClass(id, PrimitiveVisitor::type);
            ADD_FAILURE() << message;
        } catch (const std::exception& refusal) {
            EXPECT_EQ(refusal.what(), message);
        }
    }
    EXPECT_THROW(refuseClass(qxOBJECT_CLASS, PrimitiveVisitor::data), std::logic_error);
    EXPECT_THROW(refuseClass(static_cast<qxClassID>(5), PrimitiveVisitor::data), std::runtime_error);
}

}  // namespace nativevrl::test::elementwrite
