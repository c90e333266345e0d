#pragma once

#include <exception>

namespace nativevrl {

/// Holds values below a maximum, which is itself allowed.
template <typename Value>
class RangeMaxChecker {
public:
    class overflow_exception : public std::exception {};

    explicit RangeMaxChecker(Value limit) : limit_(limit) {}

    /// The value itself; throws overflow_exception when it is above the limit.
    Value check(Value value) const {
        if (value > limit_) {
            throw overflow_exception();
        }
        return value;
    }

private:
    Value limit_;
};

}  // namespace nativevrl
