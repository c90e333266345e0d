#pragma once

#include "toarray/rangemaxchecker.h"

#include <jni.h>
#include <boost/numeric/conversion/cast.hpp>

#include <algorithm>
#include <exception>

namespace nativevrl::JConvert {

/// Turns index values that count from 1, read from a Java int[], into ones that count from 0.
class IndexTranslator {
public:
    class negative_index_exception : public std::exception {};

    /// Throws negative_index_exception for a value below 1.
    unsigned translate(jint index) const {
        if (index < 1) {
            throw negative_index_exception();
        }
        return boost::numeric_cast<unsigned>(index) - 1;
    }
};

/// Notes the largest value that it translated.
class TrackingIndexTranslator : private IndexTranslator {
public:
    /// The maximum is the caller's, who sets it first.
    explicit TrackingIndexTranslator(unsigned& maximum) : maximum_(&maximum) {}

    unsigned translate(jint index) const { return accept(IndexTranslator::translate(index)); }
    /// The same for a value that counts from 0 already.
    unsigned accept(unsigned index) const {
        *maximum_ = std::max(*maximum_, index);
        return index;
    }

private:
    unsigned* maximum_;
};

/// Refuses what is above a limit.
class LimitingIndexTranslator : private IndexTranslator {
public:
    /// The largest value allowed, counting from 0.
    explicit LimitingIndexTranslator(unsigned limit) : checker_(limit) {}

    /// Throws negative_index_exception below 1 and RangeMaxChecker<unsigned>::overflow_exception above the limit.
    unsigned translate(jint index) const { return accept(IndexTranslator::translate(index)); }
    /// The same for a value that counts from 0 already.
    unsigned accept(unsigned index) const { return checker_.check(index); }

private:
    RangeMaxChecker<unsigned> checker_;
};

}  // namespace nativevrl::JConvert
