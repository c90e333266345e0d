#include "arrays/natives.h"
#include "support/heapblocks.h"

#include <new>

namespace nativevrl::test {

namespace {

using ElementCost = JvmTest;
using loomkit::test::heapBlocksGiven;

/// Counts what `access` costs once the class proxies are there.
template <typename Access>
void expectCost(JNIEnv* env, int pins, const Access& access) {
    access();
    const JniCounter counter(env);
    const std::size_t before = heapBlocksGiven;
    access();
    EXPECT_EQ(heapBlocksGiven, before) << "blocks on the heap";
    EXPECT_EQ(counter.calls(&JNINativeInterface_::NewLocalRef), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::CallLongMethodA), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::GetIntArrayElements), pins);
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

TEST_F(ElementCost, IsOneJavaCallAndNoBlockOnTheHeap) {
    const std::size_t before = heapBlocksGiven;
    ::operator delete(::operator new(1));
    ASSERT_NE(heapBlocksGiven, before) << "nothing is counted";
    const Held held(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const jintArray subscripts = intArray(env, {2, 3});
    expectCost(env, 0, [&] { getAt(JavaType<jdouble>{}, env, held.handle, jint{5}, true); });
    expectCost(env, 1, [&] { getAt(JavaType<jdouble>{}, env, held.handle, subscripts, true); });
    expectCost(env, 0, [&] { setAt(env, held.handle, jint{5}, jdouble{1}, true); });
    expectCost(env, 1, [&] { setAt(env, held.handle, subscripts, jdouble{1}, true); });
}

}  // namespace

}  // namespace nativevrl::test
