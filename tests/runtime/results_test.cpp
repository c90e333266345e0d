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

std::string shownAs(const qxArray* array) {
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

TEST(Results, HaveAStorageOfTheirOwn) {
    const struct {
        const char* function;
        std::size_t results;
        const char* shown;  ///< the last result as text
    } aliasings[] = {{"identity", 1, "{5 {6}}"},
                     {"shared_copy", 1, "{5 {6}}"},
                     {"pair_of_input", 1, "{{5 {6}} {5 {6}}}"},
                     {"pair_of_copies", 1, "{{5 {6}} {5 {6}}}"},
                     {"element", 1, "5"},
                     {"element_in_cell", 1, "{5 5}"},
                     {"same_twice", 2, "7"},
                     {"cell_and_element", 2, "7"},
                     {"element_of_temporary", 1, "7"}};
    TestInstance instance;
    const std::size_t before = qxLiveArrayCount();
    for (const auto& one : aliasings) {
        SCOPED_TRACE(one.function);
        {
            const qxArrayOwner input(cellOf({scalar(5), cellOf({scalar(6)})}));
            qxArray* inputs[] = {input.get()};
            std::vector<qxArray*> roots(one.results);
            vrlLoomkitFeval(instance.handle(), one.function, static_cast<int>(one.results), roots.data(), 1, inputs);
            const std::vector<qxArrayOwner> owned(roots.begin(), roots.end());
            EXPECT_EQ(shownAs(roots.back()), one.shown);
            roots.push_back(input.get());
            EXPECT_TRUE(treesAreApart({roots.begin(), roots.end()}));
            EXPECT_EQ(shownAs(input.get()), "{5 {6}}");
        }
        EXPECT_EQ(qxLiveArrayCount(), before);
    }
}

TEST(Results, AndInputsSurviveAFunctionThatEndsItsInputs) {
    TestInstance instance;
    const qxArrayOwner input(row({1, 2}));
    qxArray* inputs[] = {input.get()};
    vrlLoomkitFeval(instance.handle(), "destroy_inputs", 0, nullptr, 1, inputs);
    EXPECT_EQ(static_cast<const double*>(input->realData())[1], 2.0);
}

}  // namespace
