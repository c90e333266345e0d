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

}  // namespace

}  // namespace nativevrl::test
