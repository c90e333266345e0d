/// Arrays as text: displayed, by rows, and as one string in storage order.

#include "support/heapblocks.h"
#include "tojava/reads.h"

#include <algorithm>
#include <cstring>

namespace nativevrl::test::text {

using Text = JvmTest;

/// A matrix of a class whose elements are the units of a text in storage order.
template <typename Case>
qxArray* unitsAs(Case, const std::u16string& units, std::uint32_t rows) {
    qxArray* array = qxCreateNumericMatrix(rows, static_cast<std::uint32_t>(units.size()) / rows, Case::id, qxREAL);
    std::copy(units.begin(), units.end(), Case::part(array, true));
    return array;
}

constexpr ClassCase<std::uint16_t, qxCHAR_CLASS> chars;
constexpr ClassCase<std::uint16_t, qxUINT16_CLASS> uint16s;

TEST_F(Text, OfARowKeepsZeroUnitsAndSurrogates) {
    using namespace std::string_literals;
    for (const std::u16string& units : {u"abc"s, u"a\0b"s, u"\0"s, u"\xD83D\xDE00!"s, u"\xDE00\xD83D"s, u"\xFFFF"s}) {
        const Held row(env, unitsAs(chars, units, 1));
        EXPECT_EQ(toUtf16(env, readText(env, row.handle)), units);
        EXPECT_EQ(toUtf16(env, readString(env, row.handle, true)), units);
        const Held numbers(env, unitsAs(uint16s, units, 1));
        EXPECT_EQ(toUtf16(env, readString(env, numbers.handle, true)), units);
        const jobject strings = readStrings(env, numbers.handle, true);
        ASSERT_EQ(classNameOf(env, strings), "[Ljava/lang/String;");
        ASSERT_EQ(lengthOf(env, strings), 1u);
        EXPECT_EQ(toUtf16(env, elementAt(env, strings, 0)), units);
    }
}

TEST_F(Text, OfAnyOtherArrayIsWhatTheRuntimeDisplays) {
    const std::uint32_t noColumns[] = {2, 0, 3};
    const std::uint32_t pages[] = {1, 2, 2};
    const Held empties[] = {{env, nullptr},
                            {env, qxCreateNumericMatrix(1, 0, qxCHAR_CLASS, qxREAL)},
                            {env, qxCreateCellArray(3, noColumns)}};
    for (const Held& empty : empties) {
        EXPECT_EQ(toUtf16(env, readText(env, empty.handle)), u"[]");
    }
    const Held others[] = {{env, unitsAs(chars, u"abcdef", 2)},
                           {env, unitsAs(uint16s, u"abc", 1)},
                           {env, qxCreateNumericArray(3, pages, qxCHAR_CLASS, qxREAL)},
                           {env, qxCreateDoubleScalar(2.5)},
                           {env, qxCreateCellMatrix(1, 2)},
                           {env, qxCreateFunctionHandle("sin")}};
    for (const Held& other : others) {
        const std::string shown = qxToText(other.array.get());
        ASSERT_FALSE(shown.empty());
        const loomkit::test::HeapLedger ledger;
        const jobject text = readText(env, other.handle);
        EXPECT_EQ(ledger.held(), 0U) << ledger.holders();
        EXPECT_EQ(toText(env, text), shown);
    }
}

TEST_F(Text, ByRowsServesMatricesOnly) {
    const std::uint32_t extents[] = {2, 2, 2};
    const Held pages(env, qxCreateNumericArray(3, extents, qxDOUBLE_CLASS, qxREAL));
    EXPECT_EQ(readStrings(env, pages.handle, true), nullptr);
    expectThrownClass(env, "java/lang/NoClassDefFoundError");
}

}  // namespace nativevrl::test::text
