#pragma once

#include "qx/qx.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace nativevrl {

/// The arrays of one call, which it owns: it destroys what stands in its slots. A slot set to null has passed its
/// array on. Lengths of up to ten need no allocation; memory that a longer one can't have is a std::bad_alloc.
class LocalQxArrayList {
public:
    static constexpr unsigned inlineItemCount = 10;

    explicit LocalQxArrayList(unsigned count)
        : count_(count),
          items_(count <= inlineItemCount ? inlineItems_
                                          : static_cast<qxArray**>(std::malloc(count * sizeof(qxArray*)))) {
        if (items_ == nullptr) {
            throw std::bad_alloc();
        }
        std::fill_n(items_, count_, nullptr);
    }

    ~LocalQxArrayList() {
        std::for_each_n(items_, count_, [](qxArray* array) {
            if (array != nullptr) {
                qxDestroyArray(array);
            }
        });
        if (items_ != inlineItems_) {
            std::free(items_);
        }
    }

    LocalQxArrayList(const LocalQxArrayList&) = delete;
    LocalQxArrayList& operator=(const LocalQxArrayList&) = delete;

    qxArray*& operator[](unsigned index) noexcept { return items_[index]; }
    qxArray** data() noexcept { return items_; }

private:
    unsigned count_;
    qxArray** items_;
    qxArray* inlineItems_[inlineItemCount];
};

}  // namespace nativevrl
