#include "vrlkrt/run/results.h"

#include <algorithm>
#include <new>
#include <unordered_set>
#include <utility>

namespace vrlkrt {

namespace {

/// The storages of the inputs and of the results taken so far, and the headers that lie in slots of them.
class KnownArrays {
public:
    /// Adds an array with everything in its slots.
    void add(const qxArray* array) {
        std::vector<const qxArray*> waiting{array};
        while (!waiting.empty()) {
            const qxArray* next = waiting.back();
            waiting.pop_back();
            if (addStorage(next)) {
                visitSlots(next, [&](std::size_t, const qxArray* element) {
                    elements_.insert(element);
                    waiting.push_back(element);
                });
            }
        }
    }

    /// Adds a result. True when any storage in it was known already: it must be copied then. Slots that hold an array
    /// which lies in another slot already are emptied by `disown`.
    bool addResult(qxArray* result) {
        bool known = false;
        std::vector<qxArray*> waiting{result};
        while (!waiting.empty()) {
            qxArray* next = waiting.back();
            waiting.pop_back();
            if (!addStorage(next)) {
                known = true;
                continue;
            }
            visitSlots(next, [&](std::size_t index, qxArray* element) {
                if (!elements_.insert(element).second) {
                    known = true;
                    foreign_.emplace_back(next, index);
                } else {
                    waiting.push_back(element);
                }
            });
        }
        return known;
    }

    /// Leaves every array that lies in two slots to the first of them, so that it ends once.
    void disown() {
        for (const auto& [owner, index] : std::exchange(foreign_, {})) {
            qxSetCell(owner, index, nullptr);
        }
    }

private:
    template <typename Array, typename Visit>
    static void visitSlots(Array* array, Visit visit) {
        const qxClassID id = qxGetClassID(array);
        if (id != qxCELL_CLASS && id != qxSTRUCT_CLASS) {
            return;
        }
        const std::size_t fields = id == qxSTRUCT_CLASS ? array->get_number_of_struct_fields() : 1;
        for (std::size_t i = 0; i < fields * qxGetNumberOfElements(array); ++i) {
            if (qxArray* element = qxGetCell(array, i)) {
                visit(i, element);
            }
        }
    }

    /// False when an array over the same storage was added before. Storages are told apart by their block; the few
    /// that have none, empty ones, are compared one by one.
    bool addStorage(const qxArray* array) {
        if (array->realData() != nullptr) {
            return blocks_.insert(array->realData()).second;
        }
        const bool known = std::any_of(blockless_.begin(), blockless_.end(),
                                       [array](const qxArray* other) { return qxSharesStorage(array, other); });
        if (!known) {
            blockless_.push_back(array);
        }
        return !known;
    }

    std::unordered_set<const void*> blocks_;
    std::vector<const qxArray*> blockless_;
    std::unordered_set<const qxArray*> elements_;
    std::vector<std::pair<qxArray*, std::size_t>> foreign_;
};

}  // namespace

std::vector<qxArrayOwner> takeResults(const std::vector<qxArray*>& stored, const std::vector<const qxArray*>& inputs) {
    KnownArrays known;
    for (const qxArray* input : inputs) {
        known.add(input);
    }
    std::vector<qxArrayOwner> taken(stored.size());
    for (std::size_t i = 0; i < stored.size(); ++i) {
        if (stored[i] == nullptr) {
            continue;
        }
        const bool copy = known.addResult(stored[i]);
        const qxCallScopeSuspension suspension;
        taken[i].reset(copy ? qxDuplicateArray(stored[i]) : qxCreateSharedDataCopy(stored[i]));
        known.disown();
        if (taken[i] == nullptr) {
            throw std::bad_alloc();
        }
    }
    return taken;
}

}  // namespace vrlkrt
