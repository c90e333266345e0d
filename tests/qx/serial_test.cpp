#include <cmath>

#include "randomarray.h"
#include "support.h"

namespace {

using SerialForm = QxTest;

TEST_F(SerialForm, BringsRandomArraysBack) {
    const std::uint64_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    for (int round = 0; round < 1500; ++round) {
        const qxArrayOwner array = randomArray(random, 4);
        const auto form = formOf(array.get());
        const qxArrayOwner back = arrayOf(form);
        ASSERT_TRUE(back) << "round " << round;
        ASSERT_TRUE(areSame(array.get(), back.get())) << "round " << round << "\n" << qxToText(array.get());
        ASSERT_EQ(formOf(back.get()), form) << "round " << round;
    }
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
    const qxArrayOwner cell(qxCreateCellMatrix(1, 2));
    qxSetCell(cell.get(), 1, opaque.release());
    EXPECT_FALSE(qxSerialize(cell.get()));
    EXPECT_FALSE(qxSerialize(nullptr));

    const qxArrayOwner handle(qxCreateFunctionHandle("f"));
    qxDestroyArray(qxGetCell(handle.get(), 0));
    qxSetCell(handle.get(), 0, qxCreateDoubleScalar(1));
    EXPECT_FALSE(qxSerialize(handle.get()));
}

TEST_F(SerialForm, RefusesSparseTablesThatDoNotFitTogether) {
    struct Case {
        const char* what;
        std::vector<std::uint32_t> starts;
        std::vector<std::uint32_t> rows;
    };
    const Case cases[] = {{"first start", {1, 1, 2}, {0, 1}},     {"falling starts", {0, 2, 1}, {0, 1}},
                          {"beyond capacity", {0, 1, 3}, {0, 1}}, {"row outside", {0, 1, 2}, {0, 4}},
                          {"rows equal", {0, 2, 2}, {1, 1}},      {"rows falling", {0, 2, 2}, {1, 0}}};
    for (const Case& each : cases) {
        const qxArrayOwner array(qxCreateSparse(4, 2, 2, qxREAL));
        std::copy(each.starts.begin(), each.starts.end(), array->columnStartTable());
        std::copy(each.rows.begin(), each.rows.end(), array->rowIndexTable());
        EXPECT_FALSE(qxSerialize(array.get())) << each.what;
        EXPECT_FALSE(qxCreateConvertedCopy(array.get(), qxSINGLE_CLASS)) << each.what;
    }
}

qxArrayOwner nestedCells(int depth) {
    qxArrayOwner outer(qxCreateCellMatrix(1, 1));
    for (int level = 1; level < depth; ++level) {
        qxArrayOwner wrapping(qxCreateCellMatrix(1, 1));
        qxSetCell(wrapping.get(), 0, outer.release());
        outer = std::move(wrapping);
    }
    return outer;
}

/// [1, [1, [1, 1], [ … ]]] with `depth` cells around a null.
std::vector<unsigned char> formOfNestedCells(int depth) {
    std::vector<unsigned char> form = {0x82, 0x01};
    for (int level = 0; level < depth; ++level) {
        form.insert(form.end(), {0x83, 0x01, 0x82, 0x01, 0x01, 0x81});
    }
    form.push_back(0xF6);
    return form;
}

TEST_F(SerialForm, NestsDownTo256Levels) {
    EXPECT_FALSE(qxSerialize(nestedCells(257).get()));
    EXPECT_EQ(formOfNestedCells(256), formOf(nestedCells(256).get()));
    EXPECT_TRUE(arrayOf(formOfNestedCells(256)));
    EXPECT_FALSE(arrayOf(formOfNestedCells(257)));
    EXPECT_FALSE(arrayOf(formOfNestedCells(1000000)));
}

}  // namespace
