#pragma once

/// Maps between positions in a list of dimensions and nesting levels, and between subscripts that count from 1 and
/// from 0. Native storage is column-major: the first subscript varies fastest.
namespace nativevrl {

template <typename Argument, typename Result>
class IMapFunction {
public:
    virtual ~IMapFunction() = default;
    virtual Result map(const Argument& argument) const = 0;
};

/// Nesting level i is native dimension i.
class MDimensionNestingOrder : public IMapFunction<unsigned, unsigned> {
public:
    unsigned map(const unsigned& i) const override { return i; }
};

/// The innermost two levels are the rows and columns of a matrix and the outer levels its pages, the outermost
/// last: dimensions 0, 1, 2, 3 are levels N-2, N-1, N-3, N-4.
class JavaDimensionNestingOrder : public IMapFunction<unsigned, unsigned> {
public:
    explicit JavaDimensionNestingOrder(unsigned numberOfDimensions = 1) : numberOfDimensions_(numberOfDimensions) {}

    unsigned map(const unsigned& i) const override {
        if (numberOfDimensions_ == 1) {
            return 0;
        }
        return i < 2 ? numberOfDimensions_ - 2 + i : numberOfDimensions_ - 1 - i;
    }

private:
    unsigned numberOfDimensions_;
};

/// A subscript that counts from 1 to one that counts from 0. Unsigned, unchecked.
class MSubscriptToC : public IMapFunction<unsigned, unsigned> {
public:
    unsigned map(const unsigned& subscript) const override { return subscript - 1; }
};

/// A subscript that counts from 0 to one that counts from 1. Unsigned, unchecked.
class CSubscriptToM : public IMapFunction<unsigned, unsigned> {
public:
    unsigned map(const unsigned& subscript) const override { return subscript + 1; }
};

}  // namespace nativevrl
