#include "proxies/jarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"
#include "proxies/jobjectproxy.h"
#include "support/jvmtest.h"

#include <type_traits>
#include <utility>

namespace nativevrl::test::arrayproxies {

template <typename T>
class PrimitiveArrays : public JvmTest {
protected:
    using Jni = JPrimitive<T>;

    static std::vector<T> values() { return {1, 0, 1, 1, 0}; }
};

TYPED_TEST_SUITE(PrimitiveArrays, JPrimitiveTypes::In<testing::Types>, );

TYPED_TEST(PrimitiveArrays, PinOnceAndWriteBack) {
    jobject array = primitiveArray<TypeParam>(this->env, this->values());
    const JniCounter counter(this->env);
    {
        JPrimitiveArrayProxy<TypeParam> proxy(this->env, array);
        EXPECT_EQ(proxy.length(), 5);
        TypeParam* elements = proxy.getElements();
        EXPECT_EQ(proxy.getElements(), elements);
        EXPECT_EQ(counter.pins(), 1);
        elements[1] = 1;
    }
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(toVector<TypeParam>(this->env, array), (std::vector<TypeParam>{1, 1, 1, 1, 0}));
}

TYPED_TEST(PrimitiveArrays, ReleaseBeforeTheReferenceChanges) {
    jobject first = primitiveArray<TypeParam>(this->env, this->values());
    JPrimitiveArrayProxy<TypeParam> proxy(this->env, first);
    const JniCounter counter(this->env);
    proxy.getElements()[0] = 0;
    const JPrimitiveArrayProxy<TypeParam> copy(proxy);
    EXPECT_EQ(counter.pinnedBlocks(), 1) << "a copy pins nothing until it is asked";
    proxy.attach(primitiveArray<TypeParam>(this->env, {1}));
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(toVector<TypeParam>(this->env, first)[0], TypeParam{0});
    proxy.getElements()[0] = 0;
    EXPECT_EQ(toVector<TypeParam>(this->env, proxy.detach()), std::vector<TypeParam>{0}) << "detach writes back";
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

TYPED_TEST(PrimitiveArrays, MoveWithTheBlockThatTheyPinned) {
    jobject array = primitiveArray<TypeParam>(this->env, this->values());
    const JniCounter counter(this->env);
    {
        JPrimitiveArrayProxy<TypeParam> source(this->env, array);
        TypeParam* elements = source.getElements();
        elements[1] = 1;
        JPrimitiveArrayProxy<TypeParam> moved(std::move(source));
        EXPECT_EQ(moved.getElements(), elements);
        source = std::move(moved);
        EXPECT_EQ(counter.pinnedBlocks(), 0) << "assignment writes back";
        EXPECT_EQ(source.getElements()[1], TypeParam{1});
        EXPECT_THROW(moved.getElements(), tether::NullPointerException);
        expectThrownClass(this->env, "java/lang/NullPointerException");
    }
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(toVector<TypeParam>(this->env, array)[1], TypeParam{1});
}

TYPED_TEST(PrimitiveArrays, AnArrayThatCannotBeMadeRaisesOutOfMemory) {
    EXPECT_THROW(NewJPrimitiveArrayProxy<TypeParam>(this->env, std::size_t{1} << 31), tether::OutOfMemoryException);
    expectThrownClass(this->env, "java/lang/OutOfMemoryError");
}

using ObjectArrays = JvmTest;

TEST_F(ObjectArrays, AreReadElementByElement) {
    jobject one = javaString(env, u"one");
    JObjectArrayProxy<JStringProxy> array(env, objectArray(env, "java/lang/String", {one, nullptr}));
    EXPECT_EQ(array.length(), 2);
    EXPECT_STREQ(array.get(0).getStringUTFChars(), "one");
    EXPECT_TRUE(array.get(1).isNull());
    for (const jsize index : {-1, 2}) {
        EXPECT_THROW(array.get(index), tether::Exception);
        expectThrownClass(env, "java/lang/ArrayIndexOutOfBoundsException");
        EXPECT_THROW(array.set(index, one), tether::Exception);
        expectThrownClass(env, "java/lang/ArrayIndexOutOfBoundsException");
    }
    EXPECT_EQ(JObjectArrayProxy<JStringProxy>(env, nullptr).length(), 0);
}

TEST_F(ObjectArrays, WhatIsAttachedToAnElementLandsInTheArrayAtOnce) {
    JObjectArrayProxy<JObjectProxy> array(env, objectArray(env, "java/lang/Object", {nullptr, nullptr}));
    auto element = array.get(1);
    jobject text = javaString(env, u"text");
    element.attach(env->NewLocalRef(text));
    EXPECT_NE(env->IsSameObject(elementAt(env, array.ref(), 1), text), JNI_FALSE);
    EXPECT_EQ(elementAt(env, array.ref(), 0), nullptr);
    static_assert(!std::is_assignable_v<decltype(element)&, decltype(element)>,
                  "standing for another element would overwrite this one");
}

}  // namespace nativevrl::test::arrayproxies
