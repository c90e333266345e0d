#include "support.h"

#include <limits>
#include <tuple>

namespace {

using Creation = QxTest;
using Extents = std::vector<std::uint32_t>;

constexpr std::uint32_t kTooLong = 0x80000000U;

qxArrayOwner doubles(const Extents& extents) {
    return qxArrayOwner(
        qxCreateNumericArray(static_cast<std::uint32_t>(extents.size()), extents.data(), qxDOUBLE_CLASS, qxREAL));
}

TEST_F(Creation, KeepsExtentsAsGiven) {
    const Extents many = {1, 2, 1, 2, 1, 2, 1, 1, 1, 2, 1};
    const std::pair<Extents, Extents> table[] = {
        {{}, {0, 0}}, {{7}, {7, 1}}, {{2, 3, 1, 1}, {2, 3, 1, 1}}, {many, many}};
    for (const auto& [given, kept] : table) {
        const qxArrayOwner array = doubles(given);
        EXPECT_EQ(extentsOf(array.get()), kept);
        EXPECT_EQ(extentsOf(qxArrayOwner(qxCreateSharedDataCopy(array.get())).get()), kept);
        EXPECT_EQ(qxGetM(array.get()) * qxGetN(array.get()), qxGetNumberOfElements(array.get()));
    }
    EXPECT_EQ(qxGetN(doubles(many).get()), 16U);
}

TEST_F(Creation, GivesTheBlocksOfAClass) {
    const struct {
        qxClassID classId;
        std::size_t elementSize;  // 0: can't be made
        bool canBeComplex;
        const char* name;
    } table[] = {{qxUNKNOWN_CLASS, 0, false, "unknown"},
                 {qxCELL_CLASS, 0, false, "cell"},
                 {qxSTRUCT_CLASS, 0, false, "struct"},
                 {qxLOGICAL_CLASS, 1, false, "logical"},
                 {qxCHAR_CLASS, 2, false, "char"},
                 {static_cast<qxClassID>(5), 0, false, "unknown"},
                 {qxDOUBLE_CLASS, 8, true, "double"},
                 {qxSINGLE_CLASS, 4, true, "single"},
                 {qxINT8_CLASS, 1, true, "int8"},
                 {qxUINT8_CLASS, 1, true, "uint8"},
                 {qxINT16_CLASS, 2, true, "int16"},
                 {qxUINT16_CLASS, 2, true, "uint16"},
                 {qxINT32_CLASS, 4, true, "int32"},
                 {qxUINT32_CLASS, 4, true, "uint32"},
                 {qxINT64_CLASS, 8, true, "int64"},
                 {qxUINT64_CLASS, 8, true, "uint64"},
                 {qxFUNCTION_CLASS, 0, false, "function"},
                 {qxOPAQUE_CLASS, 0, false, "opaque"},
                 {qxOBJECT_CLASS, 0, false, "object"},
                 {static_cast<qxClassID>(-1), 0, false, "unknown"},
                 {static_cast<qxClassID>(19), 0, false, "unknown"}};
    for (const auto& given : table) {
        SCOPED_TRACE(given.classId);
        EXPECT_STREQ(qxGetClassName(given.classId), given.name);
        for (const qxComplexity complexity : {qxREAL, qxCOMPLEX}) {
            const qxArrayOwner array(qxCreateNumericMatrix(3, 2, given.classId, complexity));
            const std::uint32_t extents[] = {3, 2};
            const qxArrayOwner unset(qxCreateUninitNumericArray(2, extents, given.classId, complexity));
            ASSERT_EQ(array != nullptr, given.elementSize != 0);
            ASSERT_EQ(unset != nullptr, given.elementSize != 0);
            if (!array) {
                continue;
            }
            EXPECT_EQ(qxGetClassID(array.get()), given.classId);
            EXPECT_EQ(qxGetElementSize(array.get()), given.elementSize);
            EXPECT_EQ(qxIsComplex(array.get()), complexity == qxCOMPLEX && given.canBeComplex);
            EXPECT_EQ(array->imagData() != nullptr, qxIsComplex(array.get()));
            const std::string zeros(6 * given.elementSize, '\0');
            EXPECT_EQ(std::memcmp(array->realData(), zeros.data(), zeros.size()), 0);
            std::memset(unset->realData(), 1, zeros.size());
            EXPECT_EQ(unset->imagData() != nullptr, array->imagData() != nullptr);
            const qxArrayOwner empty(qxCreateNumericMatrix(0, 2, given.classId, complexity));
            EXPECT_NE(empty->realData(), nullptr);
            EXPECT_EQ(qxIsComplex(empty.get()), complexity == qxCOMPLEX && given.canBeComplex);
        }
    }
}

TEST_F(Creation, HasAsManyDimensionsAsJavaArraysCan) {
    const Extents ones(256, 1);
    const char* name = "a";
    for (const std::uint32_t count : {255U, 256U}) {
        const bool fits = count == 255;
        const auto expectMade = [&](qxArray* array, const char* what) {
            const qxArrayOwner made(array);
            EXPECT_EQ(made != nullptr, fits) << what << " of " << count << " dimensions";
            EXPECT_NE(fits ? qxToText(array) : "none", "");
        };
        expectMade(qxCreateNumericArray(count, ones.data(), qxDOUBLE_CLASS, qxCOMPLEX), "numbers");
        expectMade(qxCreateUninitNumericArray(count, ones.data(), qxUINT8_CLASS, qxREAL), "unset numbers");
        expectMade(qxCreateCellArray(count, ones.data()), "cell");
        expectMade(qxCreateStructArray(count, ones.data(), 1, &name), "struct");
    }
}

TEST_F(Creation, RefusesWhatNoMemoryHolds) {
    EXPECT_FALSE(doubles({kTooLong, 0}));
    EXPECT_FALSE(doubles({0, 1, kTooLong}));
    EXPECT_FALSE(doubles({65536, 65536}));
    EXPECT_FALSE(doubles({0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}));
    EXPECT_FALSE(qxCreateCellMatrix(65536, 65536));
    EXPECT_FALSE(qxCreateCellMatrix(kTooLong, 0));
    const char* names[] = {"a"};
    EXPECT_FALSE(qxCreateStructMatrix(65536, 65536, 1, names));
    const std::uint32_t zeroBehind[] = {65536, 65536, 0};
    EXPECT_FALSE(qxCreateNumericArray(3, zeroBehind, qxDOUBLE_CLASS, qxREAL));
    EXPECT_FALSE(qxCreateNumericArray(3, zeroBehind, qxUNKNOWN_CLASS, qxREAL));
    EXPECT_FALSE(qxCreateCellArray(3, zeroBehind));
    EXPECT_FALSE(qxCreateStructArray(3, zeroBehind, 1, names));
    EXPECT_FALSE(qxMalloc(std::size_t{1} << 50U));
    const qxArrayOwner hollow = doubles({0, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF});
    ASSERT_TRUE(hollow);
    EXPECT_EQ(qxGetNumberOfElements(hollow.get()), 0U);
    EXPECT_EQ(qxGetN(hollow.get()), std::numeric_limits<std::size_t>::max());
}

TEST_F(Creation, OfStringsReadsUtf8AndItsModifiedForm) {
    const std::tuple<const char*, std::string, std::u16string, std::string> cases[] = {
        {"ascii", "abc", u"abc", "abc"},
        {"two and three bytes", "\xC3\xA9\xE2\x82\xAC", u"\u00E9\u20AC", "\xC3\xA9\xE2\x82\xAC"},
        {"four bytes", "\xF0\x9D\x92\x9C", u"\U0001D49C", "\xF0\x9D\x92\x9C"},
        {"a pair as two sequences", "\xED\xA0\xB5\xED\xB2\x9C", u"\U0001D49C", "\xF0\x9D\x92\x9C"},
        {"a lone surrogate", "\xED\xA0\xB5x", {0xD835, u'x'}, "\xEF\xBF\xBDx"},
        {"a modified NUL", "\xC0\x80", {u'\0'}, std::string(1, '\0')},
        {"broken", "a\xFF\xC3", u"a\uFFFD\uFFFD", "a\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"overlong", "\xC1\x81", u"\uFFFD\uFFFD", "\xEF\xBF\xBD\xEF\xBF\xBD"}};
    for (const auto& [what, utf8, units, back] : cases) {
        const qxArrayOwner text(qxCreateString(utf8.c_str()));
        ASSERT_EQ(extentsOf(text.get()), (Extents{1, static_cast<std::uint32_t>(units.size())})) << what;
        EXPECT_EQ(std::u16string(realOf<char16_t>(text), units.size()), units) << what;
        EXPECT_EQ(qxGetString(text.get()), back) << what;
    }
    EXPECT_EQ(extentsOf(qxArrayOwner(qxCreateString("")).get()), (Extents{0, 0}));
    EXPECT_FALSE(qxCreateString(nullptr));
    EXPECT_EQ(qxGetString(rowOf({65}).get()), "");
}

}  // namespace
