#include "support/smallstack.h"
#include "support.h"

namespace {

using loomkit::test::runOnStack;
using SmallStack = QxTest;

/// What a virtual machine leaves of its smallest stacks to native code; sanitizers make frames larger.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kStack = std::size_t{2} << 20U;
#else
constexpr std::size_t kStack = std::size_t{80} << 10U;
#endif

/// [1, [1, [1, 1], [ … ]]] with `depth` cells around a null.
std::vector<unsigned char> formOfNestedCells(int depth) {
    std::vector<unsigned char> form = {0x82, 0x01};
    for (int level = 0; level < depth; ++level) {
        form.insert(form.end(), {0x83, 0x01, 0x82, 0x01, 0x01, 0x81});
    }
    form.push_back(0xF6);
    return form;
}

TEST_F(SmallStack, HoldsFormsThatNestAsDeepAsJavaDoes) {
    for (const int depth : {101, 102, 20000}) {
        const bool fits = depth == 101;
        const qxArrayOwner cells = nestedCells(depth);
        const auto expected = formOfNestedCells(depth);
        runOnStack(kStack, [&] {
            EXPECT_EQ(formOf(cells.get()) == expected, fits) << depth;
            EXPECT_EQ(arrayOf(expected) != nullptr, fits) << depth;
        });
    }
    const qxArrayOwner aroundHandle = nestedCells(100, qxArrayOwner(qxCreateFunctionHandle("f")));
    EXPECT_TRUE(arrayOf(formOf(aroundHandle.get())));
}

TEST_F(SmallStack, HoldsCopiesTextAndEndsOfChains) {
    qxArrayOwner outer = nestedCells(20000, rowOf({1, 2}));
    const qxArrayOwner innermost(qxCreateCellMatrix(1, 1));
    qxArrayOwner chain = nestedCells(20000, qxArrayOwner(qxCreateSharedDataCopy(innermost.get())));
    runOnStack(kStack, [&] {
        EXPECT_TRUE(qxArrayOwner(qxDuplicateArray(outer.get())));
        EXPECT_NE(qxToText(outer.get()), "");
        outer.reset();
        // The innermost cell of a chain is given the chain: what it stores is a copy.
        qxSetCell(innermost.get(), 0, chain.release());
    });
    EXPECT_NE(qxGetCell(innermost.get(), 0), nullptr);
}

}  // namespace
