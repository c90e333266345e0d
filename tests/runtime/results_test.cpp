#include "testcomponent.h"

#include <gtest/gtest.h>

namespace {

/// Every array in a tree, the root first.
void collect(const qxArray* array, std::vector<const qxArray*>& all) {
    all.push_back(array);
    if (qxGetClassID(array) == qxCELL_CLASS) {
        for (std::size_t i = 0; i < qxGetNumberOfElements(array); ++i) {
            if (const qxArray* element = qxGetCell(array, i)) {
                collect(element, all);
            }
        }
    }
}

/// Whether no storage in one tree is in another one, too.
bool treesAreApart(const std::vector<const qxArray*>& roots) {
    std::vector<const qxArray*> earlier;
    for (const qxArray* root : roots) {
        std::vector<const qxArray*> tree;
        collect(root, tree);
        for (const qxArray* array : tree) {
            for (const qxArray* other : earlier) {
                if (qxSharesStorage(array, other)) {
                    return false;
                }
            }
        }
        earlier.insert(earlier.end(), tree.begin(), tree.end());
    }
    return true;
}

struct Aliasing {
    const char* function;
    int results;
    const char* shown;  ///< the last result as text
};

void PrintTo(const Aliasing& aliasing, std::ostream* out) { *out << aliasing.function; }

class AliasedResult : public testing::TestWithParam<Aliasing> {
protected:
    static std::string shownAs(const qxArray* array) {
        if (qxGetClassID(array) != qxCELL_CLASS) {
            return std::to_string(static_cast<int>(*static_cast<double*>(array->realData())));
        }
        std::string shown = "{";
        for (std::size_t i = 0; i < qxGetNumberOfElements(array); ++i) {
            const qxArray* element = qxGetCell(array, i);
            shown += (i == 0 ? "" : " ") + (element == nullptr ? "-" : shownAs(element));
        }
        return shown + "}";
    }
};

TEST_P(AliasedResult, HasAStorageOfItsOwn) {
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    {
        const qxArrayOwner input(cellOf({scalar(5), cellOf({scalar(6)})}));
        qxArray* inputs[] = {input.get()};
        std::vector<qxArray*> results(static_cast<std::size_t>(GetParam().results));
        vrlLoomkitFeval(instance.handle(), GetParam().function, GetParam().results, results.data(), 1, inputs);
        const std::vector<qxArrayOwner> owned(results.begin(), results.end());

        std::vector<const qxArray*> roots(results.begin(), results.end());
        roots.push_back(input.get());
        EXPECT_TRUE(treesAreApart(roots));
        EXPECT_EQ(shownAs(results.back()), GetParam().shown);
        EXPECT_EQ(shownAs(input.get()), "{5 {6}}");
    }
    EXPECT_EQ(qxLiveArrayCount(), before);
}

const Aliasing aliasings[] = {{"identity", 1, "{5 {6}}"},
                              {"shared_copy", 1, "{5 {6}}"},
                              {"pair_of_input", 1, "{{5 {6}} {5 {6}}}"},
                              {"pair_of_copies", 1, "{{5 {6}} {5 {6}}}"},
                              {"element", 1, "5"},
                              {"element_in_cell", 1, "{5 5}"},
                              {"same_twice", 2, "7"},
                              {"cell_and_element", 2, "7"},
                              {"element_of_temporary", 1, "7"}};
INSTANTIATE_TEST_SUITE_P(Table, AliasedResult, testing::ValuesIn(aliasings),
                         [](const auto& info) { return std::string(info.param.function); });

TEST(Results, ThatShareNothingAreNotCopied) {
    TestInstance instance;
    const auto results = instance.call("everything", 4);
    const auto* counted = static_cast<const std::int32_t*>(results[0]->realData());
    EXPECT_EQ(qxGetClassID(results[0].get()), qxINT32_CLASS);
    EXPECT_EQ(results[0]->numberOfDimensions(), 3U);
    EXPECT_EQ(counted[11], 11);
    EXPECT_TRUE(qxIsComplex(results[1].get()));
    EXPECT_EQ(*static_cast<const double*>(results[1]->imagData()), -1.0);
    EXPECT_EQ(results[2]->get_number_of_struct_fields(), 2U);
    EXPECT_EQ(qxGetClassID(qxGetField(results[2].get(), 0, "name")), qxLOGICAL_CLASS);
    EXPECT_EQ(qxGetN(qxGetField(results[2].get(), 0, "rows")), 3U);
    EXPECT_EQ(static_cast<const double*>(results[3]->realData())[1], 5.0);
}

TEST(Results, AndInputsSurviveAFunctionThatEndsItsInputs) {
    TestInstance instance;
    const qxArrayOwner input(row({1, 2}));
    qxArray* inputs[] = {input.get()};
    vrlLoomkitFeval(instance.handle(), "destroy_inputs", 0, nullptr, 1, inputs);
    EXPECT_EQ(static_cast<const double*>(input->realData())[1], 2.0);
}

}  // namespace
