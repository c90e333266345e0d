#include "proxies/jclassproxy.h"
#include "support/heapblocks.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"
#include "toarray/creatednatives.h"

#include <functional>
#include <utility>

namespace nativevrl::test {

namespace {

using loomkit::test::heapBlocksLeft;

class WithoutMemory : public JvmTest {
protected:
    /// Calls a native with no block left, as if nothing had been used yet, then with one, and so on until it needs no
    /// more. It gives an array or an error, and leaves nothing else.
    void runWithEverMoreBlocks(const std::function<jobject()>& native) {
        int blocks = 0;
        for (bool fits = false; !fits && !HasFailure(); ++blocks) {
            SCOPED_TRACE(testing::Message() << "with " << blocks << " blocks");
            const std::size_t arrays = qxLiveArrayCount();
            disposeClassProxies(env);
            const JniCounter counter(env);
            heapBlocksLeft = blocks;
            jobject handle = native();
            fits = std::exchange(heapBlocksLeft, -1) > 0;
            EXPECT_EQ(counter.pinnedBlocks(), 0);
            if (handle == nullptr) {
                EXPECT_FALSE(fits);
                expectThrownClass(env, "java/lang/OutOfMemoryError");
            }
            takeArray(env, handle);
            EXPECT_EQ(qxLiveArrayCount(), arrays);
        }
        EXPECT_GT(blocks, 2) << "no block was refused";
    }
};

TEST_F(WithoutMemory, CreationEndsInAnErrorOrAnArray) {
    jobject row = primitiveArray<jdouble>(env, {1, 0, 2, 5, 7, 0});
    jobject deep = row;
    std::string elementClass = "[D";
    for (int level = 1; level < 12; ++level, elementClass.insert(0, "[")) {
        deep = objectArray(env, elementClass, {deep});
    }
    jobject wide = nested<jdouble>(env, Rows<jdouble>(20, std::vector<jdouble>(70, 1.5)));
    jobject text = objectArray(env, "java/lang/Object", {javaString(env, u"ab"), boxed<jint>(env, 1)});
    jobject empty = objectArray(env, "[[D", {});
    jobject numbers = objectArray(env, "java/lang/Object", {boxed<jint>(env, 1), boxed<jdouble>(env, 2)});
    jobject cell = javaCell(env, {1, 2}, {javaStruct(env, {1, 1}, {u"first", u"second"}, {row, text}), nullptr});
    jintArray rows = intArray(env, {3, 1, 2, 1, 4, 4});
    jintArray extents = intArray(env, std::vector<jint>(12, 1));
    const std::pair<const char*, std::function<jobject()>> natives[] = {
        {"nested", [&] { return fromObjects(env, wide, deep, 0, 1); }},
        {"text", [&] { return fromObjects(env, text, nullptr, 0, 0); }},
        {"empty", [&] { return fromObjects(env, empty, nullptr, 0, 0); }},
        {"cell", [&] { return fromObjects(env, cell, nullptr, 0, 0); }},
        {"flat", [&] { return fromFlat(env, extents, numbers, row, 7, 1); }},
        {"stated", [&] { return stated(env, extents, 1, 0); }},
        {"triplets", [&] { return fromTriplets(env, rows, rows, row, row, -1, -1, -1, 6, 1); }},
        {"far triplets", [&] { return fromTriplets(env, rows, rows, row, nullptr, 5000, 5000, 9, 3, 0); }},
        {"no triplets", [&] { return fromTriplets(env, nullptr, nullptr, nullptr, nullptr, 2, 2, 1, 6, 0); }},
        {"sparse", [&] { return fromFull(env, wide, 6); }},
    };
    for (const auto& [name, native] : natives) {
        SCOPED_TRACE(name);
        runWithEverMoreBlocks(native);
    }
}

}  // namespace

}  // namespace nativevrl::test
