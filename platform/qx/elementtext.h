#pragma once

#include "qx/qx.h"

#include <cstddef>
#include <string>

namespace qx {

/// One number as text, its parts apart so that a column can align each of them.
struct EntryText {
    std::string real;
    std::string imag;  ///< without its sign; empty in a real array
    bool imagIsNegative = false;
};

/// Writes stored elements of one numeric or logical array. Those that were observed share one form: integers without
/// decimals while every number is a whole one, four decimals while the magnitudes allow it, otherwise scientific.
class ElementText {
public:
    explicit ElementText(const qxArray* array) noexcept : array_(array), complex_(qxIsComplex(array)) {}

    /// Takes a stored element into account, by its zero-based position in the blocks, for the choice of the form.
    void observe(std::size_t position);
    EntryText text(std::size_t position) const;

private:
    double floatingAt(const void* part, std::size_t position) const;
    std::string numberText(const void* part, std::size_t position) const;
    std::string floatingText(double value) const;
    void observeValue(double value);
    bool isFloating() const noexcept;

    const qxArray* array_;
    bool complex_;
    bool whole_ = true;
    double largest_ = 0;
    double smallest_ = 0;  // of the magnitudes that are not zero; 0 while there is none
};

}  // namespace qx
