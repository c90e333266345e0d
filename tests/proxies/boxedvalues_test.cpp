#include "proxies/jboxedproxies.h"
#include "support/jvmtest.h"

#include <limits>
#include <string>

namespace nativevrl::test {

namespace {

template <typename T>
class BoxedValues : public JvmTest {};

using AllTypes = testing::Types<jboolean, jbyte, jchar, jshort, jint, jlong, jfloat, jdouble>;
TYPED_TEST_SUITE(BoxedValues, AllTypes);

template <typename T>
std::vector<T> typicalValues() {
    if constexpr (std::is_same_v<T, jboolean>) {
        return {0, 1};
    } else {
        return {0, 1, 65, std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
    }
}

TYPED_TEST(BoxedValues, GoIntoTheWrapperOfTheirType) {
    for (const TypeParam value : typicalValues<TypeParam>()) {
        const NewJBoxedProxy<TypeParam> proxy(this->env, value);
        EXPECT_EQ(unboxed<TypeParam>(this->env, proxy.ref()), value);
        EXPECT_EQ(describe(this->env, proxy.ref()), describe(this->env, boxed<TypeParam>(this->env, value)));
    }
}

TYPED_TEST(BoxedValues, HaveTheTextOfTheirWrapper) {
    for (const TypeParam value : typicalValues<TypeParam>()) {
        EXPECT_EQ(toText(this->env, textOf<TypeParam>(this->env, value).ref()),
                  describe(this->env, boxed<TypeParam>(this->env, value)));
    }
}

TYPED_TEST(BoxedValues, LeaveNothingBehindWhenThereIsNoMemory) {
    const JniCounter counter(this->env);
    {
        const JniFaults faults(this->env, &JNINativeInterface_::NewObjectA, 1);
        EXPECT_THROW(NewJBoxedProxy<TypeParam>(this->env, 1), tether::Exception);
    }
    EXPECT_EQ(counter.localReferences(), 0);
    expectThrownClass(this->env, "java/lang/OutOfMemoryError");
}

using NumberAccessors = JvmTest;

TEST_F(NumberAccessors, AskTheNumber) {
    const JNumberProxy number(env, boxed<jdouble>(env, -300.75));
    const auto expectValue = [&](auto value, auto expected) {
        EXPECT_EQ(value, expected);
        expectNoThrow(env);
    };
    expectValue(number.byteValue(), static_cast<jbyte>(-300));
    expectValue(number.shortValue(), -300);
    expectValue(number.intValue(), -300);
    expectValue(number.longValue(), -300);
    expectValue(number.floatValue(), -300.75f);
    expectValue(number.doubleValue(), -300.75);
}

TEST_F(NumberAccessors, LeaveAnExceptionOfTheNumberPending) {
    const JNumberProxy number(env, newObject(env, "com/norvane/toolbox/loomkit/testing/FailingNumber", "()V"));
    static_cast<void>(number.intValue());
    expectThrown(env, "java/lang/IllegalStateException", "this number has no value");
}

TEST_F(NumberAccessors, ReadBooleansAndCharacters) {
    EXPECT_EQ(JBooleanProxy(env, boxed<jboolean>(env, JNI_TRUE)).booleanValue(), JNI_TRUE);
    EXPECT_EQ(JBooleanProxy(env, boxed<jboolean>(env, JNI_FALSE)).booleanValue(), JNI_FALSE);
    EXPECT_EQ(JCharacterProxy(env, boxed<jchar>(env, 0xfffe)).charValue(), 0xfffe);
    expectNoThrow(env);
}

}  // namespace

}  // namespace nativevrl::test
