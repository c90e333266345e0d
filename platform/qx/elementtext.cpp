#include "elementtext.h"

#include "classtable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace qx {

namespace {

/// Whole numbers from here on are written in scientific form.
constexpr double kWholeLimit = 1e10;
/// Fractions keep four decimals between these magnitudes.
constexpr double kFixedLeast = 1e-3;
constexpr double kFixedLimit = 1e5;

template <typename Element>
Element elementAt(const void* part, std::size_t position) {
    return static_cast<const Element*>(part)[position];
}

}  // namespace

bool ElementText::isFloating() const noexcept {
    const qxClassID classId = qxGetClassID(array_);
    return classId == qxDOUBLE_CLASS || classId == qxSINGLE_CLASS;
}

double ElementText::floatingAt(const void* part, std::size_t position) const {
    return qxGetClassID(array_) == qxSINGLE_CLASS ? static_cast<double>(elementAt<float>(part, position))
                                                  : elementAt<double>(part, position);
}

void ElementText::observe(std::size_t position) {
    if (!isFloating()) {
        return;
    }
    observeValue(floatingAt(array_->realData(), position));
    if (complex_) {
        observeValue(floatingAt(array_->imagData(), position));
    }
}

void ElementText::observeValue(double value) {
    const double magnitude = std::fabs(value);
    if (!std::isfinite(value) || magnitude == 0) {
        return;
    }
    whole_ = whole_ && std::trunc(value) == value;
    largest_ = std::max(largest_, magnitude);
    smallest_ = smallest_ == 0 ? magnitude : std::min(smallest_, magnitude);
}

std::string ElementText::floatingText(double value) const {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0 ? "Inf" : "-Inf";
    }
    const double shown = value == 0 ? 0.0 : value;  // no sign on a zero
    if (whole_ && largest_ < kWholeLimit) {
        return fmt::format("{:.0f}", shown);
    }
    const bool isFixed = !whole_ && largest_ < kFixedLimit && smallest_ >= kFixedLeast;
    return isFixed ? fmt::format("{:.4f}", shown) : fmt::format("{:.4e}", shown);
}

std::string ElementText::numberText(const void* part, std::size_t position) const {
    if (isFloating()) {
        return floatingText(floatingAt(part, position));
    }
    return visitNumericClass(
        qxGetClassID(array_),
        [&](auto tag) -> std::string {
            using Element = typename decltype(tag)::Type;
            const auto element = elementAt<Element>(part, position);
            if constexpr (std::is_same_v<Element, Logical>) {
                return element != Logical{0} ? "1" : "0";
            } else {
                return fmt::format("{:d}", +element);
            }
        },
        [] { return std::string(); });
}

EntryText ElementText::text(std::size_t position) const {
    EntryText entry;
    entry.real = numberText(array_->realData(), position);
    if (complex_) {
        entry.imag = numberText(array_->imagData(), position);
        entry.imagIsNegative = entry.imag[0] == '-';
        if (entry.imagIsNegative) {
            entry.imag.erase(0, 1);
        }
    }
    return entry;
}

}  // namespace qx
