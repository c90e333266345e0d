#pragma once

#include <stdexcept>

namespace kpa {

/// The command line is wrong: what() tells what, and the tool ends with exit code 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace kpa
