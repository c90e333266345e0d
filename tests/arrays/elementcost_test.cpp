#include "arrays/natives.h"

#include <cstdlib>
#include <new>

namespace {

/// Blocks that operator new gave to this thread, from the library and from the platform under it.
thread_local std::size_t allocations = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* block = ::operator new(size, std::nothrow)) {
        return block;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace nativevrl::test {

namespace {

using ElementCost = JvmTest;

/// Counts what `access` costs once the class proxies are there.
template <typename Access>
void expectCost(JNIEnv* env, int pins, const Access& access) {
    access();
    const JniCounter counter(env);
    const std::size_t before = allocations;
    access();
    EXPECT_EQ(allocations, before) << "blocks on the heap";
    EXPECT_EQ(counter.calls(&JNINativeInterface_::NewLocalRef), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::CallLongMethodA), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::GetIntArrayElements), pins);
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

TEST_F(ElementCost, IsOneJavaCallAndNoBlockOnTheHeap) {
    const std::size_t before = allocations;
    ::operator delete(::operator new(1));
    ASSERT_NE(allocations, before) << "nothing is counted";
    const Held held(env, qxCreateNumericMatrix(3, 4, qxDOUBLE_CLASS, qxREAL));
    const jintArray subscripts = intArray(env, {2, 3});
    expectCost(env, 0, [&] { getAt(JavaType<jdouble>{}, env, held.handle, jint{5}, true); });
    expectCost(env, 1, [&] { getAt(JavaType<jdouble>{}, env, held.handle, subscripts, true); });
    expectCost(env, 0, [&] { setAt(env, held.handle, jint{5}, jdouble{1}, true); });
    expectCost(env, 1, [&] { setAt(env, held.handle, subscripts, jdouble{1}, true); });
}

}  // namespace

}  // namespace nativevrl::test
