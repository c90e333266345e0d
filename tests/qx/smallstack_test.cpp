#include "support.h"

#include <pthread.h>

#include <functional>

namespace {

using SmallStack = QxTest;

/// What a virtual machine leaves of its smallest stacks to native code; sanitizers make frames larger.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kStack = std::size_t{320} << 10U;
#else
constexpr std::size_t kStack = std::size_t{80} << 10U;
#endif

void runOnSmallStack(std::function<void()> operation) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
    const auto run = [](void* run) -> void* {
        (*static_cast<std::function<void()>*>(run))();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &operation), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST_F(SmallStack, HoldsEveryWalkOfANestedArray) {
    for (const int depth : {100, 20000}) {
        qxArrayOwner outer = nestedCells(depth, rowOf({1, 2}));
        qxArrayOwner copy;
        qxArrayOwner form;
        qxArrayOwner back;
        std::string text;
        runOnSmallStack([&] {
            copy.reset(qxDuplicateArray(outer.get()));
            text = qxToText(outer.get());
            form.reset(qxSerialize(outer.get()));
            back.reset(form ? qxDeserialize(form->realData(), qxGetN(form.get())) : nullptr);
        });
        EXPECT_EQ(copy != nullptr, true);
        EXPECT_NE(text, "");
        EXPECT_EQ(form != nullptr, depth == 100);
        EXPECT_EQ(back != nullptr, depth == 100);

        // The innermost cell of a chain is given the chain: what it stores is a copy.
        const qxArrayOwner innermost(qxCreateCellMatrix(1, 1));
        qxArrayOwner chain = nestedCells(depth, qxArrayOwner(qxCreateSharedDataCopy(innermost.get())));
        runOnSmallStack([&] {
            qxSetCell(innermost.get(), 0, chain.release());
            outer.reset();
            copy.reset();
        });
        EXPECT_NE(qxGetCell(innermost.get(), 0), nullptr);
    }
}

TEST_F(SmallStack, HoldsTheReadingOfDeepForms) {
    std::vector<unsigned char> form = {0x82, 0x01};
    for (int level = 0; level < 100000; ++level) {
        form.insert(form.end(), {0x83, 0x01, 0x82, 0x01, 0x01, 0x81});
    }
    form.push_back(0xF6);
    runOnSmallStack([&] { EXPECT_FALSE(arrayOf(form)); });
}

}  // namespace
