#include "randomarray.h"
#include "support.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace {

using SerialForm = RandomQxTest;

TEST_F(SerialForm, BringsRandomArraysBack) {
    forRounds(1500, [&] {
        const qxArrayOwner array = randomArray(random_, 4);
        const auto form = formOf(array.get());
        const qxArrayOwner back = arrayOf(form);
        ASSERT_TRUE(back);
        ASSERT_TRUE(areSame(array.get(), back.get())) << qxToText(array.get());
        ASSERT_EQ(formOf(back.get()), form);
    });
}

TEST_F(SerialForm, DoesNotDependOnHowAnArrayCameAbout) {
    const qxArrayOwner tight(qxCreateSparse(3, 3, 0, qxREAL));
    const qxArrayOwner roomy(qxCreateSparse(3, 3, 50, qxREAL));
    EXPECT_EQ(formOf(tight.get()), formOf(roomy.get()));

    const qxArrayOwner source = rowOf({1, -0.0, NAN});
    const qxArrayOwner shared(qxCreateSharedDataCopy(source.get()));
    const qxArrayOwner copy(qxDuplicateArray(source.get()));
    EXPECT_EQ(formOf(source.get()), formOf(shared.get()));
    EXPECT_EQ(formOf(source.get()), formOf(copy.get()));

    const qxArrayOwner plainTruth = matrixOf<std::uint8_t>(qxLOGICAL_CLASS, 1, 2, {1, 0});
    const qxArrayOwner otherTruth = matrixOf<std::uint8_t>(qxLOGICAL_CLASS, 1, 2, {255, 0});
    EXPECT_EQ(formOf(plainTruth.get()), formOf(otherTruth.get()));
}

TEST_F(SerialForm, HoldsEqualFieldNamesInOneForm) {
    // Plain and modified UTF-8, a damaged byte and what stands for it, a pair in either kind beside a lone surrogate.
    const char* const same[][2] = {{"\xF0\x9D\x92\x9C", "\xED\xA0\xB5\xED\xB2\x9C"},
                                   {"\xFF", "\xEF\xBF\xBD"},
                                   {"\xED\xA0\x80\xF0\x9D\x92\x9C", "\xED\xA0\x80\xED\xA0\xB5\xED\xB2\x9C"}};
    for (const auto& names : same) {
        std::vector<unsigned char> forms[2];
        for (int kind = 0; kind < 2; ++kind) {
            const char* name = names[kind];
            const qxArrayOwner array(qxCreateStructMatrix(1, 1, 1, &name));
            forms[kind] = formOf(array.get());
            const qxArrayOwner back = arrayOf(forms[kind]);
            ASSERT_TRUE(back) << name;
            EXPECT_EQ(qxGetFieldNumber(back.get(), name), 0) << name;
            EXPECT_EQ(formOf(back.get()), forms[kind]) << name;
        }
        EXPECT_EQ(forms[0], forms[1]) << names[0];
    }
    const char* withNul = "a\xC0\x80";
    const qxArrayOwner array(qxCreateStructMatrix(1, 1, 1, &withNul));
    const qxArrayOwner back = arrayOf(formOf(array.get()));
    ASSERT_TRUE(back);
    EXPECT_STREQ(back->get_struct_field_name_by_number(0), withNul);
}

TEST_F(SerialForm, RefusesWhatCannotTravel) {
    qxArrayOwner opaque(qxCreateOpaque("Handle", nullptr, nullptr));
    EXPECT_FALSE(qxSerialize(opaque.get()));
    const qxArrayOwner cell = cellOf(1, 2, {nullptr, opaque.release()});
    EXPECT_FALSE(qxSerialize(cell.get()));
    EXPECT_FALSE(qxSerialize(nullptr));

    const qxArrayOwner handle(qxCreateFunctionHandle("f"));
    qxDestroyArray(qxGetCell(handle.get(), 0));
    qxSetCell(handle.get(), 0, qxCreateDoubleScalar(1));
    EXPECT_FALSE(qxSerialize(handle.get()));
}

TEST_F(SerialForm, RefusesSparseTablesThatDoNotFitTogether) {
    const std::tuple<const char*, std::vector<std::uint32_t>, std::vector<std::uint32_t>> cases[] = {
        {"first start", {1, 1, 2}, {0, 1}},     {"falling starts", {0, 2, 1}, {0, 1}},
        {"beyond capacity", {0, 1, 3}, {0, 1}}, {"row outside", {0, 1, 2}, {0, 4}},
        {"rows equal", {0, 2, 2}, {1, 1}},      {"rows falling", {0, 2, 2}, {1, 0}}};
    for (const auto& [what, starts, rows] : cases) {
        const qxArrayOwner array(qxCreateSparse(4, 2, 2, qxREAL));
        std::copy(starts.begin(), starts.end(), array->columnStartTable());
        std::copy(rows.begin(), rows.end(), array->rowIndexTable());
        EXPECT_FALSE(qxSerialize(array.get())) << what;
        EXPECT_FALSE(qxCreateConvertedCopy(array.get(), qxSINGLE_CLASS)) << what;
    }
}

/// Gives every NaN of a block another sign and other bits.
template <typename Element, typename Bits>
void disturb(Random& random, void* part, std::size_t count, Bits leastNaN) {
    auto* elements = static_cast<Element*>(part);
    for (std::size_t i = 0; elements != nullptr && i < count; ++i) {
        if (std::isnan(elements[i])) {
            const Bits bits = static_cast<Bits>(random()) | leastNaN;
            std::memcpy(elements + i, &bits, sizeof bits);
        }
    }
}

void disturbNaNs(Random& random, qxArray* array) {
    const std::size_t count = qxGetNumberOfElements(array);
    const std::size_t stored = array->isSparse() ? array->columnStartTable()[qxGetN(array)] : count;
    for (void* part : {array->realData(), array->imagData()}) {
        if (qxGetClassID(array) == qxDOUBLE_CLASS) {
            disturb<double>(random, part, stored, std::uint64_t{0x7FF0000000000001});
        } else if (qxGetClassID(array) == qxSINGLE_CLASS) {
            disturb<float>(random, part, stored, std::uint32_t{0x7F800001});
        }
    }
    for (std::size_t slot = 0; slot < count * std::max(1U, array->get_number_of_struct_fields()); ++slot) {
        if (qxArray* element = qxGetCell(array, slot)) {
            disturbNaNs(random, element);
        }
    }
}

TEST_F(SerialForm, HoldsOneNaN) {
    forRounds(1000, [&] {
        const qxArrayOwner array = randomArray(random_, 3);
        const auto form = formOf(array.get());
        disturbNaNs(random_, array.get());
        EXPECT_EQ(formOf(array.get()), form);
    });
}

TEST_F(SerialForm, LetsANaNKeepItsBitsWhenItIsRead) {
    auto form = formOf(rowOf({std::numeric_limits<double>::quiet_NaN()}).get());
    form[form.size() - 8] = 0x2A;
    const qxArrayOwner array = arrayOf(form);
    ASSERT_TRUE(array);
    EXPECT_EQ(std::memcmp(array->realData(), &form[form.size() - 8], 8), 0);
}

}  // namespace
